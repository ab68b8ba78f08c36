# SPDX-License-Identifier: Apache-2.0
# What Debian and Ubuntu packages ./dev needs, and how it gets them. A part of ./dev, which has fail().

# What Debian and Ubuntu call what the programs, the tests and the layout need.
program_packages=(g++ cmake ninja-build libboost-dev libcli11-dev libelf-dev libfmt-dev libsqlite3-dev libtinyxml2-dev
    libutf8proc-dev libxxhash-dev rapidjson-dev zlib1g-dev)
format_packages=(clang-format git)
test_packages=("${program_packages[@]}" "${format_packages[@]}" clang python3 binutils elfutils libgtest-dev
    libgmock-dev libbenchmark-dev protobuf-compiler scdoc mandoc zsh fish pkg-config)
coverage_packages=("${test_packages[@]}" llvm)
dist_packages=("${program_packages[@]}" git python3 scdoc dpkg-dev file binutils lintian util-linux)
lint_packages=("${test_packages[@]}" clang-tidy cppcheck)

is_installed() {
    dpkg-query -W -f='${Status}\n' "$1" 2>/dev/null | grep -q ' installed$'
}

may_use_sudo() {
    command -v sudo >/dev/null || return 1
    # Without a terminal no one can type a password.
    sudo -n true 2>/dev/null || { [ -t 0 ] && sudo -v; }
}

# Installs those of the given packages that are missing, or says which they are and stops.
need() {
    if ! command -v dpkg-query >/dev/null; then
        echo "dev: this is no Debian or Ubuntu; taking it for granted that these are here: $*" >&2
        return
    fi
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
        may_use_sudo || fail "some packages are missing, and installing them takes root or sudo:" \
            "    apt-get install -y --no-install-recommends ${missing[*]}"
    fi
    echo "installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends -q -o Dpkg::Use-Pty=0 "${missing[@]}" |
        count_packages | show_progress "packages installed"
}

# Turns the output of apt-get into lines "[n/m]", one for each package that is set up.
count_packages() {
    local line all=0 done=0
    while IFS= read -r line; do
        if [[ $line =~ \ ([0-9]+)\ newly\ installed ]]; then
            all=${BASH_REMATCH[1]}
        elif [[ $line == "Setting up "* ]]; then
            echo "[$((++done))/$all]"
        fi
    done
}

# show_progress WHAT: reads lines "[n/m] ..." and says "n of m WHAT": on a terminal in one line that is written over,
# elsewhere in a line for each tenth.
show_progress() {
    local line tenth last=0 returned=''
    while IFS= read -r line; do
        [[ $line =~ ^\[([0-9]+)/([1-9][0-9]*)\] ]] || continue
        tenth=$((BASH_REMATCH[1] * 10 / BASH_REMATCH[2]))
        if [ -t 1 ]; then
            printf '\r    %s of %s %s' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" "$1"
            returned=$'\n'
        elif ((tenth > last)); then
            echo "    ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} $1"
        fi
        last=$tenth
    done
    printf '%s' "$returned"
}

# install_node_packages FOLDER: those of its package.json.
install_node_packages() {
    [ "$1/node_modules/.package-lock.json" -nt "$1/package-lock.json" ] ||
        (cd "$1" && npm ci) >build/npm.log 2>&1 </dev/null || tail -n 5 build/npm.log >&2
}

# Installs what only the tests of the viewer need. Where it can't, they say what they leave out.
prepare_viewer_tests() {
    local missing=()
    node --version &>/dev/null || missing+=(nodejs)
    npm --version &>/dev/null || missing+=(npm)
    { chromium --version || chromium-browser --version || google-chrome --version; } &>/dev/null || missing+=(chromium)
    [ ${#missing[@]} -eq 0 ] || (need "${missing[@]}") || true
    install_node_packages tests/viewer
}

# What clang's sanitizers and fuzzers need; the package is named after the version of clang.
need_sanitizers() {
    need "${test_packages[@]}"
    need "libclang-rt-$(clang -dumpversion | cut -d . -f 1)-dev"
    [ -r /proc/self/maps ] || fail "the sanitizers need /proc; mount it first: mount -t proc proc /proc"
}
