# SPDX-License-Identifier: Apache-2.0
"""The figures that measure_sources.py prints are those that counting by hand has."""

import pathlib
import tempfile
import unittest

import measure_sources

# The lines of the four functions: 1, 4, 3 and 3. The lambda, the table and the loop belong to what is around them.
CODE = """\
// A comment.
struct Point {
    int x() const { return m_x; }
    int m_x = 0; // "not { a text"
};

constexpr int table[] = {
    1,
};

namespace {

int sum(int count) {
    for (int i = 0; i < count; ++i) {
    } // two
}

template <class T>
void print(T) {
}

} // namespace

void run() {
    const auto each = [](int) { return "}"; };
}
"""


class MeasureSources(unittest.TestCase):
    def test_functions_are_counted_from_their_first_line_to_their_last(self):
        self.assertEqual(measure_sources.function_lengths(CODE), [1, 4, 3, 3])

    def test_a_line_of_comment_holds_nothing_else(self):
        # Of the 26 lines of the code six are blank.
        self.assertEqual(measure_sources.comment_lines(CODE), (1, 20))

    def test_tests_are_compared_with_code_that_is_no_test(self):
        with tempfile.TemporaryDirectory() as folder:
            top = pathlib.Path(folder)
            for name, text in {"tly/base/a.h": "// A.\nint a();\n", "tly/base/a.cpp": "int a() {\n    return 1;\n}\n\n",
                               "tests/tly/base/a_test.cpp": "int b;\n" * 10, "bench/b.cpp": "int c;\n"}.items():
                (top / name).parent.mkdir(parents=True, exist_ok=True)
                (top / name).write_text(text)
            self.assertEqual(measure_sources.measure(top), [
                "files                 2, of 3 lines in the median and 4 at the 90th percentile",
                "functions             1, 0 (0.0%) over 50 lines",
                "comments              20.0% of the lines; 0.0% in .cpp files",
                "tests                 2.00 lines for each line of code",
            ])

    def test_a_folder_without_sources(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(measure_sources.measure(pathlib.Path(folder)), ["no sources"])


if __name__ == "__main__":
    unittest.main()
