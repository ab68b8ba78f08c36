# SPDX-License-Identifier: Apache-2.0
"""The figures of the comparisons are those that counting by hand has."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "bench"))

import compare_with_copy
import whole_runs

# A value ends a line with a quote, or a quote and a comma: these are 4.
REPORT = b'{\n    "a": "1",\n    "b": {\n        "c": [\n            "2",\n            "3"\n        ]\n    },\n    "d": "x"\n}\n'

COUNTS = """\
--------------------------------------------------------------------------------
1,500 (100.0%)  PROGRAM TOTALS

  700 (46.67%)  ???:PlainFields::read(char const*) [/bin/x]
  300 (20.00%)  ???:SampleList<int>::read(int) [/bin/x]
  200 (13.33%)  ???:tinyxml2::XMLDocument::Parse() [/bin/x]
  100 ( 6.67%)  ???:MonLine::split(std::basic_string_view<char>) [/bin/x]
"""


class WholeRuns(unittest.TestCase):
    def test_values_are_lines_that_end_in_a_quote(self):
        for text, values in ((REPORT, 4), (b"", 0), (b'"a"\n', 1), (b'"a",\n', 1), (b'"a"', 0), (b'"a"\n"', 1)):
            with tempfile.NamedTemporaryFile() as file:
                file.write(text)
                file.flush()
                self.assertEqual(whole_runs.count_values(file.name), values, text)

    def test_a_line_of_measure(self):
        measured = whole_runs.measured_of("0.250000 0.125000 2048 321\n")
        self.assertEqual(measured, (0.25, 0.125, 2048 * 1024, 321))

    def test_instructions_by_loop(self):
        total, sums = whole_runs.instructions_of(COUNTS)
        self.assertEqual(total, 1500)
        self.assertEqual(sums, {"fields to numbers": 800, "numbers to lists": 0, "metrics": 0, "numbers to text": 300,
                                "description": 200})

    def test_shares_and_bytes(self):
        self.assertEqual(whole_runs.share_of({"design": 1.0, "reading": 3.0}), "design 25%, reading 75%")
        self.assertEqual(whole_runs.bytes_a_value((8 << 20) + 500, 100), 5)
        self.assertEqual(whole_runs.bytes_a_value(1 << 20, 100), 0)


class Copy(unittest.TestCase):
    def test_the_best_of_each_counts(self):
        # The run that is best on the clock need not be the one of the least processor time.
        runs = [(whole_runs.Measured(0.03, 0.01, 0, 0), (0.02, 0.02)),
                (whole_runs.Measured(0.02, 0.03, 0, 0), (0.01, 0.04))]
        self.assertEqual(compare_with_copy.best(runs), (20, 10, 2, 0.5))

    def test_one_ratio_stands_alone_and_several_have_a_range(self):
        self.assertEqual(compare_with_copy.spread([1.5]), "1.50")
        self.assertEqual(compare_with_copy.spread([3, 1, 2]), "2.00 (1.00 to 3.00)")

    def test_cells(self):
        cells = compare_with_copy.row_of(1000, [(20, 10, 2, 1.5)], 9 << 20, 1234, {"design": 1.0, "reading": 1.0})
        # (9 - 8) MiB / 1000 = 1048.576 bytes a value.
        self.assertEqual(cells, ["1,000", "20.0", "10.0", "2.00", "1.50", "9.0", "1048.6", "1,234",
                                 "design 50%, reading 50%"])
        self.assertEqual(compare_with_copy.instructions_cells(COUNTS, 100), ["0.0", "8.0", "0.0", "0.0", "3.0", "2.0"])


if __name__ == "__main__":
    unittest.main()
