#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks what a compiler doesn't: who includes whom, cycles, the language of pages and comments, the layout, licence
lines, and that scripts can be run.

usage: check_sources.py [FOLDER]      FOLDER is the top of the sources; by default the one this file is in.

Each fault is one line, file:line: and what is wrong. The exit status is 0 without faults, 1 with faults, and 2 if
clang-format is missing.
"""

import collections
import os
import pathlib
import re
import shutil
import subprocess
import sys

import licence_lines

SOURCE_SUFFIXES = {".h", ".cpp"}

# Folders are layers. Each row: a folder, the folders whose headers its files may include besides their own, and the
# libraries of LIBRARY_HEADERS that it may use. A name that ends in /** stands for a folder and all folders below it. A
# file that lies in none of these folders is a fault, so that a new folder gets a row.
DESCRIPTIONS = ["src/board", "src/board/xml", "src/profiler", "src/xml", "zan_profiler"]
TLY = ["tly/base", "tly/model", "tly/report", "tly/read", "tly/run"]
PROFILE = [
    "profile/base",
    "profile/check",
    "profile/columns",
    "profile/compare",
    "profile/database",
    "profile/export",
    "profile/history",
    "profile/metrics",
    "profile/model",
    "profile/read",
    "profile/rules",
    "profile/summary",
    "profile/totals",
]
TOOLBOX = [
    "tools/zanl_profile",
    "tools/zanl_profile/base",
    "tools/zanl_profile/check",
    "tools/zanl_profile/completion",
    "tools/zanl_profile/diff",
    "tools/zanl_profile/export",
    "tools/zanl_profile/history",
    "tools/zanl_profile/package",
    "tools/zanl_profile/run",
    "tools/zanl_profile/summary",
    "tools/zanl_profile/view",
]
EVERYTHING = ["lib/contract", "lib/pkg_editor/src", *DESCRIPTIONS, *TLY, *PROFILE, *TOOLBOX, "tests/**", "bench/**", "fuzz/**"]
ALL_LIBRARIES = ["tinyxml2", "libelf", "sqlite", "zlib", "property tree"]
LAYERS = [
    ("lib/contract", [], []),
    ("lib/pkg_editor/src", ["lib/contract"], ["libelf", "zlib"]),
    ("src/xml", ["lib/contract"], ["tinyxml2"]),
    ("zan_profiler", ["lib/contract", "src/xml"], []),
    ("src/profiler", ["lib/contract", "src/xml", "zan_profiler"], ["tinyxml2"]),
    ("src/board", ["lib/contract"], []),
    ("src/board/xml", ["lib/contract", "src/xml", "src/board"], ["tinyxml2"]),
    ("tly/base", ["lib/contract"], []),
    ("tly/model", ["lib/contract", "tly/base"], []),
    ("tly/report", ["lib/contract", "tly/base", "tly/model"], ["property tree"]),
    ("tly/read", ["lib/contract", "lib/pkg_editor/src", *DESCRIPTIONS, "tly/base", "tly/model", "tly/report"], []),
    ("tly/run", ["lib/contract", "tly/base", "tly/model", "tly/report", "tly/read"], []),
    ("profile/base", [], []),
    ("profile/model", ["tly/model", "profile/base"], []),
    ("profile/read", ["lib/contract", "lib/pkg_editor/src", *DESCRIPTIONS, *TLY, "profile/base", "profile/model"], []),
    ("profile/totals", ["tly/base", "tly/model", "tly/report", "profile/base", "profile/model", "profile/read"], []),
    ("profile/metrics", ["profile/base", "profile/model", "profile/totals"], []),
    ("profile/rules", ["lib/contract", "tly/base", "profile/base", "profile/model"], []),
    (
        "profile/columns",
        ["lib/contract", *TLY, *[folder for folder in PROFILE if folder not in ("profile/check", "profile/compare")]],
        ["zlib"],
    ),
    ("profile/compare", ["profile/base", "profile/model"], []),
    ("profile/check", ["lib/contract", *DESCRIPTIONS, *TLY, "profile/base", "profile/model", "profile/read"], []),
    (
        "profile/export",
        ["lib/contract", *TLY, *[folder for folder in PROFILE if folder not in ("profile/check", "profile/compare")]],
        [],
    ),
    ("profile/history", ["profile/base", "profile/database", "profile/model", "profile/summary"], ["zlib"]),
    ("profile/database", [], ["sqlite"]),
    ("profile/summary", [folder for folder in PROFILE if folder not in ("profile/check", "profile/compare")], []),
    ("tools/zanl_profile/base", ["lib/contract", "lib/pkg_editor/src", *TLY, "profile/model"], []),
    ("tools/zanl_profile/package", ["lib/contract", "lib/pkg_editor/src", *TLY, "tools/zanl_profile/base"], []),
    ("tools/zanl_profile/check", ["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base"], []),
    ("tools/zanl_profile/completion", ["lib/contract", *PROFILE, "tools/zanl_profile/base"], []),
    ("tools/zanl_profile/diff", ["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base"], []),
    ("tools/zanl_profile/export", ["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base"], []),
    (
        "tools/zanl_profile/history",
        [
            *["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base", "tools/zanl_profile/diff"],
            *["tools/zanl_profile/summary", "tools/zanl_profile/view"],
        ],
        [],
    ),
    ("tools/zanl_profile/run", ["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base"], []),
    ("tools/zanl_profile/summary", ["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base"], []),
    ("tools/zanl_profile/view", ["lib/contract", *PROFILE, *TLY, "tools/zanl_profile/base"], ["zlib"]),
    ("tools/zanl_profile", TOOLBOX, []),
    ("tests/**", EVERYTHING, ALL_LIBRARIES),
    ("bench/**", EVERYTHING, ALL_LIBRARIES),
    ("fuzz/**", EVERYTHING, ALL_LIBRARIES),
]
# Headers of other projects that not every layer may know.
LIBRARY_HEADERS = [
    ("tinyxml2", r"tinyxml2\.h"),
    ("libelf", r"g?elf\.h|libelf\.h|libelf/.*"),
    ("sqlite", r"sqlite3\.h"),
    ("zlib", r"zlib\.h"),
    ("property tree", r"boost/property_tree/.*"),
]
# An include with this comment, and the reason after it, may lead where the table doesn't let it.
EXCEPTION = re.compile(r"// Against the layers: \S")

# Values reach a database as bound parameters alone: a text that begins a statement is joined with nothing, printed into
# nothing, and appended to nothing. A comment like this before it says why one may be, as where names of columns are ours.
SQL_EXCEPTION = re.compile(r"// SQL without values: \S")
SQL_BEGINNING = re.compile(
    r'"(?:\(\s*)?(?:SELECT|INSERT|UPDATE|DELETE|REPLACE|CREATE|DROP|ALTER|PRAGMA|ATTACH|VACUUM|WITH|BEGIN|SAVEPOINT)\b'
)
JOINED = re.compile(r"\+|<<|\bappend\b|\bformat(?:_to)?\b|printf\b|\bprintable\b|\bto_string\b")
CPP_TEXT = re.compile(r'R"\(.*?\)"|"(?:[^"\\\n]|\\.)*"', re.DOTALL)

# Words that make sentences hard to follow, as they mean something else in plain technical English. A line that has one
# is a fault if there are more than MOST_LINES of them: some are right, "behind" in a place for instance.
UNPLAIN_WORDS = re.compile(
    r"\b(?:tell|tells|telling|told|behind|ahead of|gives|pass(?:ed|es|ing)? over|becomes of|by chance|in hand|at hand"
    r"|comes? (?:out )?of (?:it|what|faults)|whoever|somebody|nobody|anybody|everybody)\b|\btell_|_told\b"
    r"|\bwords of the C\+\+",
    re.IGNORECASE,
)
MOST_LINES = 40
# Files with sentences, besides sources; tests and what a program has written aside.
PROSE_SUFFIXES = SOURCE_SUFFIXES | {".md", ".py", ".sh", ".txt", ".cmake", ".json"}
PROSE_NAMES = {"dev", ".clang-tidy", ".clang-format", ".cppcheck-suppressions", "describe_report", "make_corpus"}
NO_PROSE_FOLDERS = {".git", "build", "tests"}
NO_PROSE_NAMES = {"expected_report.json"}

# target: a path of the tree, or None; excepted: its line says why it may be there
Include = collections.namedtuple("Include", "line name target excepted")
Fault = collections.namedtuple("Fault", "path line text")


def source_folders():
    """The folders in which sources are looked for; others, such as the build folder, are not looked at."""
    return sorted({folder.split("/")[0] for folder, _, _ in LAYERS} | {"samples"})


def source_files(top):
    """Paths of the sources, relative to `top` and with slashes, sorted."""
    files = []
    for folder in source_folders():
        for path in (top / folder).rglob("*"):
            if path.suffix in SOURCE_SUFFIXES and path.is_file():
                files.append(path.relative_to(top).as_posix())
    return sorted(files)


def without_comments(text):
    """The text with comments blanked out; lines keep their numbers."""
    comment = re.compile(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)
    return comment.sub(lambda m: m[0] if m[0].startswith('"') else re.sub(r"[^\n]", " ", m[0]), text)


def find_target(path, name, files):
    """The file of the tree that an include means: beside the including file, else the one whose path ends so."""
    beside = (pathlib.PurePosixPath(path).parent / name).as_posix()
    if beside in files:
        return beside
    found = [file for file in files if file == name or file.endswith("/" + name)]
    return found[0] if found else None


def read_includes(top, files):
    """Maps each file to its list of Include."""
    directive = re.compile(r'^[ \t]*#[ \t]*include[ \t]*["<]([^">\n]+)[">]', re.MULTILINE)
    known = set(files)
    includes = {}
    for path in files:
        text = (top / path).read_text(encoding="utf-8", errors="replace")
        lines = text.splitlines()
        code = without_comments(text)
        includes[path] = []
        for match in directive.finditer(code):
            line = code.count("\n", 0, match.start()) + 1
            excepted = EXCEPTION.search(lines[line - 1]) is not None
            includes[path].append(Include(line, match[1], find_target(path, match[1], known), excepted))
    return includes


def is_in(path, folder):
    """Whether a file lies in a folder of the table."""
    if folder.endswith("/**"):
        return path.startswith(folder.removesuffix("**"))
    return path.rpartition("/")[0] == folder


def layer_of(path):
    """The row of LAYERS that a file belongs to, or None."""
    return next((row for row in LAYERS if is_in(path, row[0])), None)


def files_in_no_layer(files):
    for path in files:
        if layer_of(path) is None:
            yield Fault(path, 1, "lies in no layer; give its folder a row in LAYERS of tests/check_sources.py")


def wrong_directions(includes):
    """Includes of layers, and of other projects' libraries, that the file's layer must not know."""
    for path, include in all_includes(includes):
        layer = layer_of(path)
        if layer is None or include.excepted:
            continue
        folder, may_include, may_use = layer
        if include.target is None:
            for library, header in LIBRARY_HEADERS:
                if re.fullmatch(header, include.name) and library not in may_use:
                    yield Fault(path, include.line, f"{folder} must not use {library}, whose header {include.name} is")
            continue
        target = layer_of(include.target)
        if target is not None and not any(is_in(include.target, other) for other in [folder, *may_include]):
            yield Fault(path, include.line, f"{folder} must not include {include.name} of {target[0]}")


def unit_of(path):
    """The files of one stem in one folder are a unit: x.h, x.cpp."""
    return path.removesuffix(pathlib.PurePosixPath(path).suffix)


def unit_cycles(includes):
    """Units that need each other: each cycle once, at the include that closes it in a walk in order of names."""
    needs = collections.defaultdict(dict)  # unit: {other unit: the first include that needs it}
    for path, include in all_includes(includes):
        if include.target is not None and unit_of(include.target) != unit_of(path):
            needs[unit_of(path)].setdefault(unit_of(include.target), (path, include.line))
    done, open_units = set(), []

    def walk(unit):
        open_units.append(unit)
        for other, (path, line) in needs[unit].items():
            if other in open_units:
                cycle = open_units[open_units.index(other):] + [other]
                yield Fault(path, line, f"cycle of units: {' -> '.join(cycle)}")
            elif other not in done:
                yield from walk(other)
        open_units.pop()
        done.add(unit)

    for unit in sorted({unit_of(path) for path in includes}):
        if unit not in done:
            yield from walk(unit)


def include_cycles(includes):
    """Cycles of files in one unit, which unit_cycles() doesn't see: each once, at the include that closes it."""
    done, open_path = set(), []

    def walk(path):
        open_path.append(path)
        for include in includes[path]:
            target = include.target
            if target in open_path:
                cycle = open_path[open_path.index(target):] + [target]
                if len({unit_of(member) for member in cycle}) == 1:
                    yield Fault(path, include.line, f"include cycle: {' -> '.join(cycle)}")
            elif target is not None and target not in done:
                yield from walk(target)
        open_path.pop()
        done.add(path)

    for path in includes:
        if path not in done:
            yield from walk(path)


def wrong_layout(top, files):
    """The first place of each file that clang-format would change."""
    if not files:
        return
    command = ["clang-format", "--dry-run", "--style=file", *files]
    run = subprocess.run(command, cwd=top, text=True, stderr=subprocess.PIPE)
    reported = set()
    for match in re.finditer(r"^(.+?):(\d+):\d+: (?:warning|error): (.*)$", run.stderr, re.MULTILINE):
        path, line, what = match.groups()
        if path not in reported:
            reported.add(path)
            if what.startswith("code should be clang-formatted"):
                what = "laid out otherwise than .clang-format says; run ./dev format"
            yield Fault(path, int(line), what)
    if run.returncode != 0 and not reported:
        yield Fault(".clang-format", 1, f"clang-format failed: {run.stderr.strip()}")


def joined_sql(top, files):
    """Statements of SQL that aren't constants, outside of tests."""
    for path in files:
        if path.startswith(("tests/", "bench/", "fuzz/")):
            continue
        text = (top / path).read_text(encoding="utf-8", errors="replace")
        # Nothing within a text ends a statement of C++; lengths stay.
        blank = CPP_TEXT.sub(lambda match: '"' + "_" * (len(match[0]) - 2) + '"', text)
        for match in SQL_BEGINNING.finditer(text):
            begin = max(blank.rfind(end, 0, match.start()) for end in ";{}") + 1
            end = blank.find(";", match.end())
            is_excepted = SQL_EXCEPTION.search(text[:match.start()].rpartition("\n\n")[2])
            if JOINED.search(re.sub(r"//.*", "", blank[begin:end])) and not is_excepted:
                yield Fault(path, text.count("\n", 0, match.start()) + 1, "SQL is joined with other texts; bind values to its parameters")


def prose_files(top):
    """Paths of files with sentences, relative to `top`, sorted."""
    files = []
    for path in sorted(top.rglob("*")):
        relative = path.relative_to(top)
        is_prose = path.suffix in PROSE_SUFFIXES or path.name in PROSE_NAMES
        if is_prose and relative.parts[0] not in NO_PROSE_FOLDERS and path.name not in NO_PROSE_NAMES and path.is_file():
            files.append(relative.as_posix())
    return files


def unplain_words(top):
    """Lines with unplain words, if there are too many of them."""
    faults = []
    for path in prose_files(top):
        for number, line in enumerate((top / path).read_text(encoding="utf-8", errors="replace").splitlines(), 1):
            match = UNPLAIN_WORDS.search(line)
            if match:
                faults.append(Fault(path, number, f"'{match[0]}' is no plain word here"))
    return faults if len(faults) > MOST_LINES else []


def missing_licences(top):
    """Files that lack a licence line, in a tree that has a licence."""
    if (top / "LICENSE").is_file():
        for path in licence_lines.files_without(top):
            yield Fault(path, 1, f"has no line '{licence_lines.LINE}'; run ./dev format")


def scripts_not_executable(top):
    """Scripts whose first line names a program to run them, and that can't be run by their name."""
    for path in sorted(top.rglob("*")):
        relative = path.relative_to(top)
        if licence_lines.NOT_LOOKED_AT.intersection(relative.parts) or not path.is_file() or os.access(path, os.X_OK):
            continue
        with path.open("rb") as file:
            if file.read(2) == b"#!":
                yield Fault(relative.as_posix(), 1, "begins with '#!' and isn't executable")


def all_includes(includes):
    return ((path, include) for path, list_ in includes.items() for include in list_)


def check(top):
    """All faults of the tree, in a stable order."""
    files = source_files(top)
    includes = read_includes(top, files)
    faults = list(files_in_no_layer(files))
    for rule in (wrong_directions, unit_cycles, include_cycles):
        faults += rule(includes)
    faults += wrong_layout(top, files)
    faults += joined_sql(top, files)
    faults += unplain_words(top)
    faults += missing_licences(top)
    faults += scripts_not_executable(top)
    return sorted(set(faults))


def main(arguments):
    top = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    if not shutil.which("clang-format"):
        print("check_sources.py: clang-format is not installed", file=sys.stderr)
        return 2
    faults = check(top)
    for fault in faults:
        print(f"{fault.path}:{fault.line}: {fault.text}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
