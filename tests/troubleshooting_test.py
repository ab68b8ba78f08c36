# SPDX-License-Identifier: Apache-2.0
"""The page on troubleshooting has the messages of both programs, as their sources have them."""

import pathlib
import re
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
PAGE = TOP / "docs" / "troubleshooting.md"
TEXT = r'"((?:[^"\\\n]|\\.)*)"'
# Shorter pieces, such as " of ", stand between names.
SHORTEST_PIECE = 6


def statement_at(code, begin):
    """The code from an opening bracket to the one that closes it."""
    depth = 0
    for match in re.compile(TEXT + r"|'(?:[^'\\\n]|\\.)'|[()]").finditer(code, begin):
        depth += {"(": 1, ")": -1}.get(match[0], 0)
        if depth == 0:
            return code[begin:match.end()]
    return code[begin:]


def joined_texts(code):
    """The texts in the code; those with nothing but blanks between them are one."""
    return [text.replace('\\"', '"') for text in re.findall(TEXT, re.sub(r'(?<!\\)"\s*"', "", code))]


def messages_of_failures(code):
    """The texts of the failures that code throws."""
    for match in re.finditer(r"\b(?:Failure|system_failure)(?=\()", code):
        yield from joined_texts(statement_at(code, match.end()))


def messages_of_program():
    """The texts of zanl-profile-tly: the table of messages, and what ends a run."""
    table = (TOP / "tly/base/diagnostics.cpp").read_text().split("constexpr MessageRow rows[] = {")[1].split("\n};")[0]
    yield from joined_texts(re.sub(r"//.*", "", table))
    run = (TOP / "tly/run/tly_exe.cpp").read_text()
    yield from (text for text in joined_texts(run) if text.startswith("ABORT: Error"))
    for match in re.finditer(r"\brefuse(?=\()", run):
        yield from (f"ABORT: {text}" for text in joined_texts(statement_at(run, match.end())))


def pieces(message):
    """What of a message is the same whenever it is printed."""
    parts = re.split(r"\{[^}]*\}|\\n", message)
    return [part.strip(" :;,") for part in parts if len(part.strip(" :;,")) >= SHORTEST_PIECE]


def missing_pieces(messages, page):
    """Pieces that no text in backticks on the page has."""
    shown = "\n".join(re.findall(r"`([^`]+)`", page))
    return sorted({piece for message in messages for piece in pieces(message) if piece not in shown})


class Troubleshooting(unittest.TestCase):
    def test_the_page_has_the_messages_of_the_program(self):
        messages = list(messages_of_program())
        self.assertGreater(len(messages), 40)
        self.assertEqual(missing_pieces(messages, PAGE.read_text()), [])

    def test_the_page_has_the_messages_of_the_toolbox(self):
        files = [path for folder in ("tools", "profile") for path in (TOP / folder).rglob("*.cpp")]
        messages = [text for path in files for text in messages_of_failures(path.read_text())]
        self.assertGreater(len(messages), 80)
        self.assertEqual(missing_pieces(messages, PAGE.read_text()), [], "give them a row in docs/troubleshooting.md")

    def test_a_message_that_is_missing_is_found(self):
        code = 'throw Failure("can\'t mend " + in_quotes(name, "(") + ": it is "\n    "beyond {}"); puts("other text");'
        messages = list(messages_of_failures(code))
        self.assertEqual(messages, ["can't mend ", "(", ": it is beyond {}"])
        self.assertEqual(missing_pieces(messages, "`can't mend NAME`, it is beyond"), ["it is beyond"])


if __name__ == "__main__":
    unittest.main()
