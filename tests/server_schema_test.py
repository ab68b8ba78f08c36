# SPDX-License-Identifier: Apache-2.0
"""The tables of examples/fleet/postgres have the columns of exports, which docs/export.md lists."""

import pathlib
import re
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
# Columns of these stand in an order of their own, which takes less space.
SAMPLES = ("sample", "port_sample")


def tables_of_page():
    page = (TOP / "docs" / "export.md").read_text(encoding="utf-8")
    rows = re.findall(r"^\| `(\w+)` \| [^|]* \| (`run_id`[^|]*) \|$", page, re.MULTILINE)
    return {name: re.findall(r"`(\w+)`", columns) for name, columns in rows}


def tables_of_schema():
    """Without the date of the run, which no export has."""
    text = (TOP / "examples" / "fleet" / "postgres" / "schema.sql").read_text(encoding="utf-8")
    tables = re.findall(r"^CREATE TABLE IF NOT EXISTS export\.(\w+) \((.*?)\n\)", text, re.MULTILINE | re.DOTALL)
    columns = {name: re.findall(r"(?:^|,)\s*([a-z]\w*) (?:bigint|integer|text|date|double)", columns) for name, columns in tables}
    return {name: [column for column in found if column != "run_date"] for name, found in columns.items()}


class ServerSchema(unittest.TestCase):
    def test_tables_have_the_columns_of_exports(self):
        expected = tables_of_page()
        self.assertEqual(len(expected), 9)
        found = tables_of_schema()
        self.assertEqual(sorted(found), sorted(expected))
        for name, columns in expected.items():
            with self.subTest(name):
                order = sorted if name in SAMPLES else list
                self.assertEqual(order(found[name]), order(columns))


if __name__ == "__main__":
    unittest.main()
