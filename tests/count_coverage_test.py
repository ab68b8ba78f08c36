# SPDX-License-Identifier: Apache-2.0
"""What is counted of the numbers that llvm-cov exports."""

import pathlib
import unittest

from count_coverage import missed_conditions, missed_lines, name_of, totals


def file_of(branches=(), segments=(), lines=(0, 0), outcomes=(0, 0)):
    summary = {kind: {"covered": covered, "count": count} for kind, (covered, count) in (("lines", lines), ("branches", outcomes))}
    return {"branches": branches, "segments": segments, "summary": summary}


class CountCoverage(unittest.TestCase):
    def test_sources_of_programs_and_libraries_count_and_nothing_else(self):
        top = pathlib.Path("/top")
        names = ("/top/tly/base/a.h", "/top/tests/a.cpp", "/top/build/generated/a.cpp", "/usr/include/a.h")
        self.assertEqual([name_of({"filename": name}, top) for name in names], ["tly/base/a.h", None, None, None])

    # Line 3: 2 times true; line 4: 5 times false; line 5: both; line 6: never met, or known when it is compiled.
    def test_a_condition_that_had_one_outcome_is_named_with_the_other(self):
        branches = [[3, 9, 3, 14, 2, 0, 0, 0, 4], [4, 9, 4, 14, 0, 5, 0, 0, 4], [5, 1, 5, 2, 1, 1, 0, 0, 4], [6, 1, 6, 2, 0, 0, 0, 0, 4]]
        self.assertEqual(missed_conditions(file_of(branches)), {(3, 9, "never false"), (4, 9, "never true")})

    # A stretch without a count is no code, one that doesn't begin there goes on after another.
    def test_a_stretch_that_never_ran_is_named_where_it_begins(self):
        segments = [[1, 5, 3, True, True, False], [2, 7, 0, True, True, False], [3, 1, 0, True, False, False], [4, 1, 0, False, True, False]]
        self.assertEqual(missed_lines(file_of(segments=segments)), {(2, 7, "never run")})

    # 90 of 100 and 5 of 20 lines are 95 of 120; 3 of 4 outcomes.
    def test_percents_are_of_all_files_together(self):
        files = [file_of(lines=(90, 100), outcomes=(3, 4)), file_of(lines=(5, 20))]
        lines, outcomes = totals(files)
        self.assertAlmostEqual(lines, 95 / 120 * 100)
        self.assertEqual(outcomes, 75.0)

    def test_without_any_all_are_met(self):
        self.assertEqual(totals([]), (100.0, 100.0))


if __name__ == "__main__":
    unittest.main()
