#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Prints what the sources come to: lengths of files and functions, the share of comments, and of tests.

usage: measure_sources.py [FOLDER]      FOLDER is the top of the sources; by default the one this file is in.

The figures are for people; nothing fails by them. Lengths and comments are those of the programs and libraries, without
tests, benchmarks and fuzzers. Blank lines don't count as lines of code or of tests.
"""

import pathlib
import re
import statistics
import sys

import check_sources
import licence_lines

TEST_FOLDERS = ("tests/", "bench/", "fuzz/")
LONG_FUNCTION = 50  # lines
# A statement that opens a body of its own, but no function's.
NO_FUNCTION = re.compile(r"^\s*(?:(?:template\s*<.*>\s*)?(?:class|struct|union|enum|namespace|extern)\b|if\b|for\b|while\b|"
                         r"switch\b|else\b|do\b|try\b|catch\b|case\b|default\b)|=\s*$|\breturn\b", re.DOTALL)


def without_texts(code):
    """The code without comments and texts, with as many lines."""
    text = r'R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\''
    return re.sub(text, lambda m: re.sub(r"[^\n]", "", m[0]), check_sources.without_comments(code), flags=re.DOTALL)


def function_lengths(code):
    """The lines of each function that has a body, from its first line to its closing brace."""
    lengths, open_braces, begin = [], [], 0
    for match in re.finditer(r"[{};]|^#[^\n]*", without_texts(code), re.MULTILINE):
        text = match.string
        if match[0] == "{":
            statement = text[begin:match.start()]
            is_function = "(" in statement and not NO_FUNCTION.search(statement)
            first = begin + len(statement) - len(statement.lstrip())
            inside = any(other is not None for other in open_braces)
            open_braces.append(first if is_function and not inside else None)
        elif match[0] == "}" and open_braces:
            first = open_braces.pop()
            if first is not None:
                lengths.append(text.count("\n", first, match.end()) + 1)
        begin = match.end()
    return lengths


def comment_lines(code):
    """How many lines hold a comment alone, and how many hold anything; the licence line counts for neither."""
    lines = [line.strip() for line in code.splitlines() if licence_lines.LINE not in line]
    return sum(line.startswith("//") for line in lines), sum(line != "" for line in lines)


def percent(part, whole):
    return f"{100 * part / whole:.1f}%" if whole else "-"


def measure(top):
    """Lines of text to print."""
    texts = {path: (top / path).read_text(encoding="utf-8", errors="replace") for path in check_sources.source_files(top)}
    own = {path: text for path, text in texts.items() if not path.startswith(TEST_FOLDERS)}
    if not own:
        return ["no sources"]
    lengths = sorted(text.count("\n") for text in own.values())
    functions = [length for text in own.values() for length in function_lengths(text)]
    long_ones = sum(length > LONG_FUNCTION for length in functions)
    comments = {}
    for suffix in (".cpp", ".h"):
        counts = [comment_lines(text) for path, text in own.items() if path.endswith(suffix)]
        comments[suffix] = [sum(column) for column in zip(*counts)] or [0, 0]
    all_comments = [sum(column) for column in zip(*comments.values())]
    test_lines = sum(comment_lines(text)[1] for path, text in texts.items() if path.startswith("tests/"))
    return [
        f"files                 {len(lengths)}, of {statistics.median(lengths):.0f} lines in the median and "
        f"{lengths[len(lengths) * 9 // 10]} at the 90th percentile",
        f"functions             {len(functions)}, {long_ones} ({percent(long_ones, len(functions))}) "
        f"over {LONG_FUNCTION} lines",
        f"comments              {percent(*all_comments)} of the lines; {percent(*comments['.cpp'])} in .cpp files",
        f"tests                 {test_lines / all_comments[1]:.2f} lines for each line of code",
    ]


def main(arguments):
    top = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    print("\n".join(measure(top)))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
