# SPDX-License-Identifier: Apache-2.0
"""The faults that tests/mutants/mutate.py makes are those of code, and are the same each time."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "mutants"))
import mutate

SOURCE = """#include <a.h> // 1 < 2
namespace zan {
// a < b
int f(int a) {
    if (!a && a < 7)
        call(a, "x < 1");
    return a - 1;
}
"""


def changes(text):
    return {(mutant.line, mutant.kind, mutant.after) for mutant in mutate.mutants_of("a.cpp", text)}


class Mutants(unittest.TestCase):
    def test_they_are_in_code_and_neither_in_comments_nor_in_texts(self):
        self.assertEqual(
            changes(SOURCE),
            {
                (5, "negation", "if (a && a < 7)"),
                (5, "logic", "if (!a || a < 7)"),
                (5, "comparison", "if (!a && a <= 7)"),
                (5, "number", "if (!a && a < 8)"),
                (6, "call left out", ";"),
                (7, "arithmetic", "return a + 1;"),
                (7, "number", "return a - 2;"),
            },
        )

    def test_one_changes_its_own_line_alone(self):
        for mutant in mutate.mutants_of("a.cpp", SOURCE):
            changed = mutate.with_mutant(SOURCE, mutant).split("\n")
            original = SOURCE.split("\n")
            self.assertEqual(changed[mutant.line - 1].strip(), mutant.after)
            changed[mutant.line - 1] = original[mutant.line - 1]
            self.assertEqual(changed, original)

    def test_a_seed_draws_the_same_ones(self):
        sources = {"a.cpp": SOURCE, "b.cpp": SOURCE}
        self.assertEqual(mutate.draw(sources, 5, 1), mutate.draw(sources, 5, 1))
        self.assertNotEqual(mutate.draw(sources, 14, 1), mutate.draw(sources, 14, 2))
        self.assertEqual(len(set(mutate.draw(sources, 100, 1))), 14)

    def test_each_source_of_the_project_has_programs(self):
        for file in mutate.read_sources(mutate.TOP):
            self.assertTrue(mutate.programs_of(file), file)

    def test_programs_are_tried_without_the_mutant_and_with_it_until_one_fails(self):
        calls = []

        class FakeBench(mutate.Bench):
            def make(self, program):
                calls.append((program, "a - 1" in (self.sources / "tly/run/a.cpp").read_text()))
                return True

            def passes(self, program, choice=None):
                return calls[-1][1] or program != "end_to_end_test"

        with tempfile.TemporaryDirectory() as folder:
            bench = FakeBench(pathlib.Path(folder))
            source = bench.sources / "tly" / "run" / "a.cpp"
            source.parent.mkdir(parents=True)
            source.write_text(SOURCE)
            mutant = next(m for m in mutate.mutants_of("tly/run/a.cpp", SOURCE) if m.kind == "arithmetic")
            self.assertEqual(bench.outcome(mutant), "killed by end_to_end_test")
            self.assertEqual(source.read_text(), SOURCE)
        whole, changed = True, False
        self.assertEqual(
            calls,
            [("tly_read_test", whole), ("tly_read_test", changed), ("end_to_end_test", whole), ("end_to_end_test", changed)],
        )

    def test_the_tests_of_the_source_come_first_then_those_of_its_folder(self):
        with tempfile.TemporaryDirectory() as folder:
            tests = pathlib.Path(folder) / "tests" / "tly" / "run"
            tests.mkdir(parents=True)
            (tests / "a_test.cpp").write_text("TEST(Second, One) {\n}\n\nTEST_F(First, Two) {\n}\n")
            (tests / "b_test.cpp").write_text("TEST_P(Third, One) {\n}\n")
            self.assertEqual(
                list(mutate.choices_of("tly/run/a.cpp", pathlib.Path(folder))),
                ["--gtest_filter=First.*:*/First.*:Second.*:*/Second.*",
                 "--gtest_filter=First.*:*/First.*:Second.*:*/Second.*:Third.*:*/Third.*"],
            )
            self.assertEqual(list(mutate.choices_of("tly/read/a.cpp", pathlib.Path(folder))), [])

    def test_what_is_known_isnt_tried_again(self):
        mutants = mutate.mutants_of("a.cpp", SOURCE)
        with tempfile.TemporaryDirectory() as folder:
            results = pathlib.Path(folder) / "results.jsonl"
            for mutant in mutants:
                mutate.append_result(results, 1, mutant, "survived")
            # To try one would begin with a build of the sources, and make this folder.
            mutate.try_all(mutants, pathlib.Path(folder) / "bench", results)
            self.assertFalse((pathlib.Path(folder) / "bench").exists())
            self.assertIn("| `` | 7 | 0 | 7 |", mutate.summary(mutate.read_results(results)))


if __name__ == "__main__":
    unittest.main()
