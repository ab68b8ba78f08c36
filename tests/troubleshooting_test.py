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


# Texts in the readers of descriptions that aren't messages: words and defaults of attributes, what a reader prints when its
# steps are looked at, and what only readers of files print, as the programs read from packages.
NOT_MESSAGES = ("shared virtual", "shared physical", "device private", "plexo-generate ", "velmora_sh ", "[xml] ", "ERROR FOUND: ",
                "XML error: ")


def without_statements(code, name):
    """The code without the arguments of each call of this name."""
    for match in reversed(list(re.finditer(rf"\b{name}(?=\()", code))):
        code = code[:match.start()] + code[match.end() + len(statement_at(code, match.end())):]
    return code


def messages_of_reader(code):
    """The texts with blanks in the code of a reader of descriptions; each is a message unless it is listed above."""
    code = re.sub(r"^ *//.*|^#include.*", "", code, flags=re.MULTILINE)
    texts = joined_texts(without_statements(code, "ZAN_CONTRACT"))
    return [text for text in texts if " " in text.strip() and not text.startswith(NOT_MESSAGES)]


def messages_of_xml_faults(code):
    """What readers of a run say of a text that is no XML, and of rules that are contracts in the code."""
    code = re.sub(r"^ *//.*", "", code, flags=re.MULTILINE)
    rows = code.split("constexpr ContractRow contract_rows[] = {")[1].split("\n};")[0]
    yield from joined_texts(rows)[1::3]
    yield from (text for text in joined_texts(code) if text.startswith("it "))


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

    def test_the_page_has_the_messages_of_the_readers_of_descriptions(self):
        files = [path for folder in ("src/xml", "src/profiler", "src/board/xml") for path in (TOP / folder).glob("*.*")]
        messages = [text for path in files for text in messages_of_reader(path.read_text())]
        messages += messages_of_xml_faults((TOP / "profile/read/xml_faults.cpp").read_text())
        self.assertGreater(len(messages), 120)
        self.assertEqual(missing_pieces(messages, PAGE.read_text()), [], "give them a row in docs/troubleshooting.md")

    def test_the_page_of_findings_has_their_codes(self):
        table = (TOP / "profile/check/finding.cpp").read_text().split("finding_rows[] = {")[1].split("\n};")[0]
        codes = re.findall(r'^ +\{"([\w-]+)", ', table, re.MULTILINE)
        self.assertGreater(len(codes), 30)
        shown = re.findall(r"^\| `([\w-]+)` \|", (TOP / "docs/check.md").read_text(), re.MULTILINE)
        self.assertEqual([code for code in codes if code not in shown], [])

    def test_messages_of_a_reader_are_those_that_are_no_contracts_words_or_comments(self):
        code = ('#include "a b.h"\n// "a comment"\nZAN_CONTRACT(f("a (b"), "no message");\n{"type", "shared virtual"},\n'
                'report(elem, "Sizes must be "\n    "> 0.");\n')
        self.assertEqual(messages_of_reader(code), ["Sizes must be > 0."])
        rows = 'constexpr ContractRow contract_rows[] = {\n {"!m_a", "it holds a twice", "a"},\n};\n f("it is none");'
        self.assertEqual(list(messages_of_xml_faults(rows)), ["it holds a twice", "it holds a twice", "it is none"])

    def test_a_message_that_is_missing_is_found(self):
        code = 'throw Failure("can\'t mend " + in_quotes(name, "(") + ": it is "\n    "beyond {}"); puts("other text");'
        messages = list(messages_of_failures(code))
        self.assertEqual(messages, ["can't mend ", "(", ": it is beyond {}"])
        self.assertEqual(missing_pieces(messages, "`can't mend NAME`, it is beyond"), ["it is beyond"])


if __name__ == "__main__":
    unittest.main()
