#!/usr/bin/env python3
"""Checks what a compiler doesn't: who may include whom, include cycles, and the layout of the sources.

usage: check_sources.py [FOLDER]      FOLDER is the top of the sources; by default the one this file is in.

Each fault is one line, file:line: and what is wrong. The exit status is 0 without faults, 1 with faults, and 2 if
clang-format is missing.
"""

import collections
import fnmatch
import pathlib
import re
import shutil
import subprocess
import sys

SOURCE_SUFFIXES = {".h", ".cpp"}
# Folders of sources. Others, such as the build folder, are not looked at.
SOURCE_FOLDERS = ["lib", "src", "zan_profiler", "tly", "tools", "tests", "bench", "fuzz", "samples"]

# Which library a file belongs to: the first pattern that matches. A file in these folders that none matches is a fault.
LIBRARY_OF = [
    ("lib/contract/*", "contract"),
    ("lib/pkg_editor/*", "pkg_editor"),
    ("src/Base*", "zan_xml"),
    ("src/ProfilerConfig*", "zan_profiler"),
    ("zan_profiler/*", "zan_profiler"),
    ("src/Board*", "zan_board"),
    ("src/DeviceModel*", "zan_board"),
    ("tly/*", "tly"),
    ("tools/*", "tools"),
    ("tests/*", "tests"),
    ("bench/*", "tests"),
    ("fuzz/*", "tests"),
    ("samples/*", "tests"),
]

# tools -> tly -> {zan_profiler, zan_board, pkg_editor} -> zan_xml, and everybody may use contract.
MAY_INCLUDE = {
    "contract": set(),
    "pkg_editor": {"contract"},
    "zan_xml": {"contract"},
    "zan_profiler": {"contract", "zan_xml"},
    "zan_board": {"contract", "zan_xml"},
    "tly": {"contract", "zan_xml", "zan_profiler", "zan_board", "pkg_editor"},
    "tools": {"contract", "zan_xml", "zan_profiler", "zan_board", "pkg_editor", "tly"},
    "tests": {"contract", "zan_xml", "zan_profiler", "zan_board", "pkg_editor", "tly", "tools"},
}

# Headers of other projects that only some libraries know. What tests and tools use is their own affair.
OUTSIDE_HEADERS = [
    ("tinyxml2.h", {"zan_xml", "zan_profiler", "zan_board"}),
    ("libelf.h", {"pkg_editor"}),
    ("gelf.h", {"pkg_editor"}),
    ("zlib.h", {"pkg_editor"}),
]

# Inside tly only these join the libraries below it.
JOINS_LIBRARIES = "tly/tly_parse*"

# Layers inside tly, from the highest to the lowest; a file includes its own layer and lower ones. What no pattern
# matches is the profile model and its helpers, which know no JSON.
TLY_LAYERS = [
    ("run driver", ["tly/main.cpp", "tly/tly_exe.*"]),
    ("readers", ["tly/tly_parse*", "tly/tly_mon_*", "tly/line_reader.*"]),
    ("report", ["tly/tly_json.*", "tly/tly_*_json.*", "tly/report_*"]),
    ("model", ["tly/*"]),
]
# The one place where the model meets the report: TlyKernel::tellNode.
MODEL_MEETS_REPORT = "tly/tly_kernel.*"
JSON_HEADERS = ["boost/property_tree/*"]

Include = collections.namedtuple("Include", "line name target")  # target: a path of the tree, or None
Fault = collections.namedtuple("Fault", "path line text")


def matches(path, pattern):
    return fnmatch.fnmatchcase(path, pattern)


def source_files(top):
    """Paths of the sources, relative to `top` and with slashes, sorted."""
    files = []
    for folder in SOURCE_FOLDERS:
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
        text = without_comments((top / path).read_text(encoding="utf-8", errors="replace"))
        includes[path] = [
            Include(text.count("\n", 0, match.start()) + 1, match[1], find_target(path, match[1], known))
            for match in directive.finditer(text)
        ]
    return includes


def library_of(path):
    return next((library for pattern, library in LIBRARY_OF if matches(path, pattern)), None)


def unknown_files(files):
    for path in files:
        if library_of(path) is None:
            yield Fault(path, 1, "belongs to no library; name it in LIBRARY_OF of tests/check_sources.py")


def wrong_directions(includes):
    """Includes of libraries that the including one must not know."""
    for path, include in all_includes(includes):
        library = library_of(path)
        target = include.target and library_of(include.target)
        if library is None or target is None or target == library:
            continue
        if target not in MAY_INCLUDE[library]:
            yield Fault(path, include.line, f"{library} must not include {include.name} of {target}")
        elif library == "tly" and target != "contract" and not matches(path, JOINS_LIBRARIES):
            what = f"only {JOINS_LIBRARIES} joins the libraries; this is {include.name} of {target}"
            yield Fault(path, include.line, what)


def wrong_outside_headers(includes):
    for path, include in all_includes(includes):
        library = library_of(path)
        for header, libraries in OUTSIDE_HEADERS:
            if include.target is None and include.name == header and library not in libraries | {"tools", "tests"}:
                what = f"{library} must not know {header}; only {', '.join(sorted(libraries))} may"
                yield Fault(path, include.line, what)


def tly_layer(path):
    """Index in TLY_LAYERS; None outside tly."""
    for index, (_, patterns) in enumerate(TLY_LAYERS):
        if any(matches(path, pattern) for pattern in patterns):
            return index
    return None


def wrong_layers(includes):
    """Includes inside tly of a layer above the including file's."""
    for path, include in all_includes(includes):
        layer, target = tly_layer(path), include.target and tly_layer(include.target)
        if layer is None or target is None or target >= layer:
            continue
        if TLY_LAYERS[target][0] == "report" and matches(path, MODEL_MEETS_REPORT):
            continue
        what = f"the {TLY_LAYERS[layer][0]} must not include {include.name} of the {TLY_LAYERS[target][0]}"
        yield Fault(path, include.line, what)


def json_in_model(includes):
    """Ways from the model to JSON other than TlyKernel, direct or through other headers."""

    def is_json(include):
        if include.target:
            layer = tly_layer(include.target)
            return layer is not None and TLY_LAYERS[layer][0] == "report"
        return any(matches(include.name, pattern) for pattern in JSON_HEADERS)

    def way_to_json(include, seen):
        if is_json(include):
            return [include.name]
        if include.target is None or include.target in seen:
            return None
        seen.add(include.target)
        for further in includes[include.target]:
            way = way_to_json(further, seen)
            if way:
                return [include.name] + way
        return None

    for path, include in all_includes(includes):
        layer = tly_layer(path)
        if layer is None or TLY_LAYERS[layer][0] != "model" or matches(path, MODEL_MEETS_REPORT):
            continue
        if include.target and tly_layer(include.target) not in (None, layer):
            continue  # told by wrong_layers
        way = way_to_json(include, {path})
        if way:
            yield Fault(path, include.line, f"the model must not know JSON, and this leads to it: {' -> '.join(way)}")


def include_cycles(includes):
    """Each cycle once, at the include that closes it in a walk in order of names."""
    done, open_path = set(), []

    def walk(path):
        open_path.append(path)
        for include in includes[path]:
            target = include.target
            if target in open_path:
                cycle = open_path[open_path.index(target):] + [target]
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
    told = set()
    for match in re.finditer(r"^(.+?):(\d+):\d+: (?:warning|error): (.*)$", run.stderr, re.MULTILINE):
        path, line, what = match.groups()
        if path not in told:
            told.add(path)
            if what.startswith("code should be clang-formatted"):
                what = "laid out otherwise than .clang-format says; run ./dev format"
            yield Fault(path, int(line), what)
    if run.returncode != 0 and not told:
        yield Fault(".clang-format", 1, f"clang-format failed: {run.stderr.strip()}")


def all_includes(includes):
    return ((path, include) for path, list_ in includes.items() for include in list_)


def check(top):
    """All faults of the tree, in a stable order."""
    files = source_files(top)
    includes = read_includes(top, files)
    faults = list(unknown_files(files))
    for rule in (wrong_directions, wrong_outside_headers, wrong_layers, json_in_model, include_cycles):
        faults += rule(includes)
    faults += wrong_layout(top, files)
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
