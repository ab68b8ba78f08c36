# SPDX-License-Identifier: Apache-2.0
# The steps of a test run: one line each, with a log to read when something fails. A part of ./dev.

# Runs a command with its output in the log. A failure shows the log and ends everything.
logged() {
    local log=$1
    shift
    "$@" >"$log" 2>&1 </dev/null && return
    printf 'failed\n\n'
    show_failure "$log" "$@"
}

# show_failure LOG COMMAND...: shows the log of a command that has failed, and ends everything.
show_failure() {
    local log=$1
    shift
    # Neither what was built nor what passed.
    grep -vE '^\[[0-9]+/[0-9]+\] | Passed +[0-9.]+ sec$|^ +Start +[0-9]+: |^\[( RUN +| +OK |-+)\]' "$log" | tail -n 200
    fail "'$*' failed; its whole output is in $log"
}

# Everything that the outcome of a step may depend on, as one short text.
fingerprint() {
    {
        git rev-parse HEAD || true
        { git ls-files -z --cached --others --exclude-standard ||
            find . -name .git -prune -o -path ./build -prune -o -type f -print0; } |
            xargs -0 sha256sum || true
        dpkg-query -W || true
    } 2>/dev/null | sha256sum
}

# What steps couldn't run; such a step is run again next time.
not_run=()

# step NAME FUNCTION: runs the function, unless it passed before and nothing has changed since.
step() {
    local name=$1 function=$2 passed=build/passed/$1 num_not_run=${#not_run[@]}
    printf '%-15s ' "$name"
    if [ "$(cat "$passed" 2>/dev/null)" = "$tested" ]; then
        echo "unchanged since it passed"
        return
    fi
    rm -f "$passed"
    "$function" "$name"
    [ ${#not_run[@]} -eq "$num_not_run" ] || return 0
    mkdir -p "${passed%/*}"
    echo "$tested" >"$passed"
}

check_sources() {
    logged build/sources.log python3 tests/check_sources.py
    echo "ok"
}

test_scripts() {
    logged build/scripts.log python3 -m unittest discover --start-directory tests --pattern '*_test.py'
    sed -n 's/^Ran \([0-9]*\) test.*/\1 tests passed/p' build/scripts.log
}

test_walks() {
    logged build/walks.log python3 tests/walks/run_walks.py
    tail -n 1 build/walks.log
}

# Reads the log of a step whose tests are no programs of ours: what passed, and what couldn't be run.
show_passed() {
    local what
    grep ' tests passed$' "$1"
    while IFS= read -r what; do not_run+=("$what"); done < <(sed -n 's/^not run: //p' "$1")
}

# This and the next with the programs that the step "release" has built.
test_viewer() {
    logged build/viewer.log tests/viewer/run_tests.py --program build/release/tools/zanl_profile/zanl-profile
    show_passed build/viewer.log
}

test_exports() {
    logged build/exports.log tests/exports/run_tests.py build/release/tools/zanl_profile/zanl-profile
    show_passed build/exports.log
}

# The examples for many machines, on real engines; what can't be started is named.
test_fleet() {
    (need make parallel slurmctld slurmd slurm-client munge) || true
    (need postgresql-15 sqlite3) || true
    build_release zanl-profile
    tests/fleet/run_tests.py build/release/tools/zanl_profile/zanl-profile
}

# test_preset PRESET [TARGET [CTEST_OPTION...]]: the whole build, or this target alone; all tests, or those that the
# options choose.
test_preset() {
    local preset=$1 target=${2:-all}
    logged "build/$preset.log" cmake --preset "$preset"
    printf 'building, '
    logged "build/$preset.log" cmake --build --preset "$preset" --target "$target"
    printf 'testing: '
    logged "build/$preset.log" ctest --preset "$preset" -j "$(nproc)" "${@:3}"
    # To ctest each program is one test.
    awk '/^\[  PASSED  \]/ { num_tests += $4 } END { print num_tests " tests passed" }' \
        "build/$preset/Testing/Temporary/LastTest.log"
}

test_quick() {
    test_preset release quick_tests --label-exclude thorough
}

# Several sources are looked at as one, since most of the time goes into the headers that they share. Not those of the
# tests, which would take longer than all others, and whose macros trip checks that the tests themselves don't.
run_clang_tidy() {
    run-clang-tidy -quiet -p build/lint -j "$(nproc)" "^$PWD/(build/lint/)?(lib|CMakeFiles|tools|bench|fuzz)/" 2>&1 |
        sed -E -e 's/\x1b\[[0-9;]*m//g' \
            -e '/^[^ ]*clang-tidy[^ ]* .*-p=|^[0-9]+ warnings?( and [0-9]+ errors?)? (generated|treated)/d'
}

check_with_clang_tidy() {
    logged build/clang-tidy.log cmake --preset lint
    logged build/clang-tidy.log cmake --build --preset lint --target zan_version
    logged build/clang-tidy.log run_clang_tidy
    echo "ok"
}

check_with_cppcheck() {
    local folder includes=()
    for folder in lib/contract lib/pkg_editor/src src/* src/board/xml zan_profiler tly/* profile/* tools/zanl_profile/* bench \
        tests/support; do
        includes+=(-I "$folder")
    done
    logged build/cppcheck.log cppcheck --quiet --error-exitcode=1 --language=c++ --std=c++20 -j "$(nproc)" \
        --enable=warning,performance,portability,style --inline-suppr --suppressions-list=.cppcheck-suppressions \
        --library=googletest --template='{file}:{line}: {message} [{id}]' "${includes[@]}" \
        lib src zan_profiler tly profile tools bench fuzz tests
    echo "ok"
}
