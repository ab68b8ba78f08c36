#!/usr/bin/env python3
"""Fills in what pages show of the toolbox's output.

usage: docs/fill_outputs.py [--check]

A block of a page that begins with `$ zanl-profile ...` is replaced by the file that begins so, of those that the tests hold
against the program: tests/tools/zanl_profile/*/golden/*.txt. With --check nothing is changed; blocks that are stale are
listed, and the exit status is 1.
"""

import pathlib
import re
import sys
import textwrap

TOP = pathlib.Path(__file__).resolve().parent.parent
PAGES = [TOP / "README.md", *sorted((TOP / "docs").glob("*.md"))]
BLOCK = re.compile(r"^    \$ zanl-profile (?:.*\n)(?:    .*\n|\n(?=    ))*", re.MULTILINE)


def golden_outputs():
    """Maps each command to what it prints, with the command as its first line."""
    files = sorted((TOP / "tests/tools/zanl_profile").glob("*/golden/*.txt"))
    texts = [re.sub(r"\(status \d+\)\n\Z", "", file.read_text()) for file in files]
    return {text.splitlines()[0]: text for text in texts}


def filled(page_text, outputs):
    """The text of a page with the outputs of today. Blocks whose command has no file stay as they are."""
    def output_of(block):
        shown = textwrap.dedent(block[0])
        text = outputs.get(shown.splitlines()[0])
        return block[0] if text is None else textwrap.indent(text, "    ")
    return BLOCK.sub(output_of, page_text)


def main(arguments):
    if arguments not in ([], ["--check"]):
        sys.exit(__doc__)
    outputs = golden_outputs()
    stale = []
    for page in PAGES:
        text = page.read_text()
        today = filled(text, outputs)
        if today == text:
            continue
        stale.append(page.relative_to(TOP).as_posix())
        if not arguments:
            page.write_text(today)
    if arguments and stale:
        sys.exit("\n".join(f"{page}: shows an output that is stale; run docs/fill_outputs.py" for page in stale))


if __name__ == "__main__":
    main(sys.argv[1:])
