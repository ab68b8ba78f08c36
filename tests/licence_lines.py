#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Finds files without a licence line, and adds the line.

usage: licence_lines.py [FOLDER]      FOLDER is the top of the sources; by default the one this file is in.

Adds the line to each source, script and page that lacks it, and prints their names. `./dev format` runs it.
"""

import pathlib
import sys

LINE = "SPDX-License-Identifier: Apache-2.0"
# Where a licence line may stand: a script's first line names its shell, and a man page's its section.
NUM_FIRST_LINES = 3

# How a comment of one line begins and ends. A script without an ending, which begins with "#!", is like one of ".sh".
HASH, SLASHES, ANGLES, STARS = ("# ", ""), ("// ", ""), ("<!-- ", " -->"), ("/* ", " */")
COMMENTS = {
    ".cpp": SLASHES, ".h": SLASHES, ".c": SLASHES, ".js": SLASHES, ".mjs": SLASHES, ".ts": SLASHES,
    ".css": STARS,
    ".html": ANGLES, ".md": ANGLES, ".svg": ANGLES,
    ".cmake": HASH, ".ignore": HASH, ".py": HASH, ".sh": HASH, ".yml": HASH, ".yaml": HASH, ".in": HASH,
    ".scd": ("; ", ""),
}
COMMENTS_OF_NAMES = {
    "CMakeLists.txt": HASH, ".clang-format": HASH, ".clang-tidy": HASH, ".cppcheck-suppressions": HASH,
    ".gitattributes": HASH, ".gitignore": HASH,
    # C programs include it, too.
    "pkg_editor.h": STARS,
}
# Folders of what a build or a run has made, and of outputs to compare with.
NOT_LOOKED_AT = {".git", "build", "__pycache__", "golden", "node_modules"}


def comment_of(path):
    """How comments of this file begin and end, or None if it takes no licence line."""
    form = COMMENTS_OF_NAMES.get(path.name) or COMMENTS.get(path.suffix)
    if form is None and not path.suffix:
        with path.open("rb") as file:
            if file.read(2) == b"#!":
                form = HASH
    return form


def has_line(text):
    return any(LINE in line for line in text.splitlines()[:NUM_FIRST_LINES])


def files_without(top):
    """Paths of the files that lack the line, relative to `top`, sorted."""
    missing = []
    for path in sorted(top.rglob("*")):
        relative = path.relative_to(top)
        if NOT_LOOKED_AT & set(relative.parts) or path.is_symlink() or not path.is_file() or comment_of(path) is None:
            continue
        if not has_line(path.read_text(encoding="utf-8", errors="replace")):
            missing.append(relative.as_posix())
    return missing


def with_line(path, text):
    """The text of the file with its licence line: the first one, or the second one where the first has to stay."""
    begin, end = comment_of(path)
    line = f"{begin}{LINE}{end}\n"
    first, newline, rest = text.partition("\n")
    if first.startswith("#!") or path.suffix == ".scd" or first.lower().startswith(("<!doctype", "<?xml")):
        return first + newline + line + rest
    return line + text


def main(arguments):
    top = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    for name in files_without(top):
        path = top / name
        path.write_text(with_line(path, path.read_text(encoding="utf-8")), encoding="utf-8")
        print(name)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
