# SPDX-License-Identifier: Apache-2.0
"""Proves that check_sources.py reports each kind of fault, and nothing where there is none."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import check_sources

TOP = pathlib.Path(check_sources.__file__).resolve().parent.parent


class CheckSources(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.top = pathlib.Path(folder.name)
        shutil.copy(TOP / ".clang-format", self.top)

    def faults(self, files):
        """The faults, as "path:line: text", of a tree of these files, which map paths to texts."""
        for name, text in files.items():
            path = self.top / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return [f"{fault.path}:{fault.line}: {fault.text}" for fault in check_sources.check(self.top)]

    def test_an_empty_tree_has_no_faults(self):
        self.assertEqual(self.faults({}), [])

    def test_includes_along_the_direction_are_fine(self):
        self.assertEqual(
            self.faults({
                "lib/contract/contract.h": "",
                "lib/pkg_editor/src/pkg_editor.h": '#include "contract.h"\n',
                "src/xml/BaseVisitor.h": "#include <tinyxml2.h>\n",
                "src/board/BoardSpec.h": "",
                "src/board/xml/BoardSpecXml.h": '#include "BaseVisitor.h"\n#include "BoardSpec.h"\n',
                "zan_profiler/ProfilerConfig.h": '#include "BaseVisitor.h"\n#include "contract.h"\n',
                "src/profiler/ProfilerConfigXml.h": '#include "BaseVisitor.h"\n#include "ProfilerConfig.h"\n',
                "tly/read/tly_parse.cpp": '#include "BoardSpecXml.h"\n#include "pkg_editor.h"\n',
                "tly/run/tly_exe.h": "",
                "tools/zanl_profile/base/run.cpp": '#include "pkg_editor.h"\n#include "tly_exe.h"\n',
                "tests/a/b/a_test.cpp": "#include <tinyxml2.h>\n\n#include \"tly_exe.h\"\n",
            }),
            [],
        )

    def test_an_include_against_the_direction(self):
        self.assertEqual(
            self.faults({"tly/run/tly_exe.h": "", "src/xml/BaseVisitor.cpp": '\n#include "tly_exe.h"\n'}),
            ["src/xml/BaseVisitor.cpp:2: src/xml must not include tly_exe.h of tly/run"],
        )

    def test_an_include_against_the_direction_in_angle_brackets(self):
        self.assertEqual(
            self.faults({"tly/run/tly_exe.h": "", "src/xml/BaseVisitor.cpp": "#include <tly_exe.h>\n"}),
            ["src/xml/BaseVisitor.cpp:1: src/xml must not include tly_exe.h of tly/run"],
        )

    def test_description_libraries_dont_know_each_other_nor_the_package(self):
        self.assertEqual(
            self.faults({
                "src/board/BoardSpec.h": "",
                "src/profiler/ProfilerConfigXml.h": "",
                "lib/pkg_editor/src/pkg_editor.h": "",
                "src/board/BoardSpec.cpp": '#include "ProfilerConfigXml.h"\n',
                "zan_profiler/ProfilerConfig.h": '#include "BoardSpec.h"\n#include "pkg_editor.h"\n',
            }),
            [
                "src/board/BoardSpec.cpp:1: src/board must not include ProfilerConfigXml.h of src/profiler",
                "zan_profiler/ProfilerConfig.h:1: zan_profiler must not include BoardSpec.h of src/board",
                "zan_profiler/ProfilerConfig.h:2: zan_profiler must not include pkg_editor.h of lib/pkg_editor/src",
            ],
        )

    def test_a_file_without_a_licence_line(self):
        line = "SPDX-License-Identifier: Apache-2.0"
        self.assertEqual(
            self.faults({
                "LICENSE": "",
                ".clang-format": f"# {line}\n" + (TOP / ".clang-format").read_text(),
                "src/xml/a.h": "// A header.\n",
                "src/xml/b.h": f"// {line}\n",
                "docs/page.md": "# A page\n",
            }),
            [
                f"docs/page.md:1: has no line '{line}'; run ./dev format",
                f"src/xml/a.h:1: has no line '{line}'; run ./dev format",
            ],
        )

    def test_a_script_that_isnt_executable(self):
        faults = self.faults({"docs/refresh": "#!/bin/sh\n", "docs/make": "#!/bin/sh\n", "docs/text": "# no script\n"})
        self.assertEqual(
            faults,
            ["docs/make:1: begins with '#!' and isn't executable", "docs/refresh:1: begins with '#!' and isn't executable"],
        )
        (self.top / "docs/refresh").chmod(0o755)
        self.assertEqual(self.faults({}), ["docs/make:1: begins with '#!' and isn't executable"])

    def test_the_tree_has_a_licence(self):
        self.assertTrue((TOP / "LICENSE").read_text().lstrip().startswith("Apache License"))

    def test_nothing_includes_tests(self):
        self.assertEqual(
            self.faults({"tests/support/help.h": "", "tools/zanl_profile/main.cpp": '#include "help.h"\n'}),
            ["tools/zanl_profile/main.cpp:1: tools/zanl_profile must not include help.h of tests/**"],
        )

    def test_packages_know_no_xml(self):
        self.assertEqual(
            self.faults({"lib/pkg_editor/src/pkg_editor.cpp": "#include <libelf.h>\n#include <tinyxml2.h>\n"}),
            [
                "lib/pkg_editor/src/pkg_editor.cpp:2: lib/pkg_editor/src must not use tinyxml2, "
                "whose header tinyxml2.h is"
            ],
        )

    def test_only_the_readers_join_the_libraries(self):
        self.assertEqual(
            self.faults({"lib/pkg_editor/src/pkg_editor.h": "", "tly/run/tly_exe.cpp": '#include "pkg_editor.h"\n'}),
            ["tly/run/tly_exe.cpp:1: tly/run must not include pkg_editor.h of lib/pkg_editor/src"],
        )

    def test_a_lower_layer_of_tly_doesnt_know_a_higher_one(self):
        self.assertEqual(
            self.faults({"tly/read/tly_parse.h": "", "tly/run/tly_exe.h": "",
                        "tly/report/tly_json.cpp": '#include "tly_parse.h"\n',
                        "tly/read/tly_parse.cpp": '#include "tly_exe.h"\n'}),
            [
                "tly/read/tly_parse.cpp:1: tly/read must not include tly_exe.h of tly/run",
                "tly/report/tly_json.cpp:1: tly/report must not include tly_parse.h of tly/read",
            ],
        )

    def test_the_model_knows_no_report(self):
        self.assertEqual(
            self.faults({"tly/report/report_tree.h": "", "tly/model/tly_ext_mem.h": '#include "report_tree.h"\n'}),
            ["tly/model/tly_ext_mem.h:1: tly/model must not include report_tree.h of tly/report"],
        )

    def test_the_model_knows_no_tree_of_boost(self):
        self.assertEqual(
            self.faults({"tly/model/mon_line.cpp": "#include <boost/property_tree/ptree.hpp>\n"}),
            [
                "tly/model/mon_line.cpp:1: tly/model must not use property tree, "
                "whose header boost/property_tree/ptree.hpp is"
            ],
        )

    def test_an_include_that_gives_its_reason_is_excepted(self):
        tree = '#include "report_tree.h" // Against the layers: {}\n'
        files = {"tly/report/report_tree.h": "", "tly/model/tly_kernel.h": tree.format("it returns a tree")}
        self.assertEqual(self.faults(files), [])
        files["tly/model/tly_kernel.h"] = tree.format("")
        self.assertIn("tly/model/tly_kernel.h:1: tly/model must not include report_tree.h of tly/report",
                      self.faults(files))

    def test_a_file_in_no_layer(self):
        self.assertEqual(
            self.faults({"src/Helper.h": "", "samples/helper.cpp": ""}),
            [f"{path}:1: lies in no layer; give its folder a row in LAYERS of tests/check_sources.py"
             for path in ("samples/helper.cpp", "src/Helper.h")],
        )

    def test_a_cycle_is_reported_once(self):
        self.assertEqual(
            self.faults({
                "tly/base/a.h": '#include "b.h"\n',
                "tly/base/b.h": '\n#include "c.h"\n',
                "tly/base/c.h": '#include "a.h"\n',
            }),
            ["tly/base/c.h:1: cycle of units: tly/base/a -> tly/base/b -> tly/base/c -> tly/base/a"],
        )

    def test_a_file_that_includes_itself(self):
        self.assertEqual(self.faults({"tly/base/a.h": '#include "a.h"\n'}), ["tly/base/a.h:1: include cycle: tly/base/a.h -> tly/base/a.h"])

    def test_a_diamond_is_no_cycle(self):
        self.assertEqual(
            self.faults({"tly/base/a.h": '#include "b.h"\n#include "c.h"\n', "tly/base/b.h": '#include "d.h"\n',
                        "tly/base/c.h": '#include "d.h"\n', "tly/base/d.h": ""}),
            [],
        )

    def test_units_that_need_each_other_are_a_cycle(self):
        files = {"tly/base/a.h": "", "tly/base/b.h": '#include "a.h"\n', "tly/base/a.cpp": '#include "a.h"\n'}
        self.assertEqual(self.faults(files), [])
        files["tly/base/a.cpp"] = '#include "a.h"\n#include "b.h"\n'
        self.assertEqual(
            self.faults(files), ["tly/base/b.h:1: cycle of units: tly/base/a -> tly/base/b -> tly/base/a"]
        )

    def test_files_of_one_stem_in_two_folders_are_two_units(self):
        self.assertEqual(
            self.faults({
                "tly/base/a.h": "",
                "tly/model/a.cpp": '#include "b.h"\n',
                "tly/model/b.h": "",
                "tly/model/b.cpp": '#include "b.h"\n\n#include "tly/base/a.h"\n',
            }),
            [],
        )

    def test_a_few_unplain_words_are_fine(self):
        line = "// What stands behind it tells more.\n"  # one line, two words
        self.assertEqual(self.faults({"tly/base/a.h": line * check_sources.MOST_LINES}), [])
        faults = self.faults({"README.md": "Nobody knows.\n"})
        self.assertEqual(len(faults), check_sources.MOST_LINES + 1)
        self.assertEqual(faults[0], "README.md:1: 'Nobody' is no plain word here")
        self.assertEqual(faults[1], "tly/base/a.h:1: 'behind' is no plain word here")

    def test_words_of_tests_builds_and_reports_dont_count(self):
        text = "It gives.\n" * (check_sources.MOST_LINES + 1)
        files = ("tests/README.md", "build/a.md", "samples/a/expected_report.json", "samples/a/profile.mon")
        self.assertEqual(self.faults(dict.fromkeys(files, text)), [])
        for name in ("dev", "cmake/a.cmake", "docs/a.md", "tests_of_it.md"):
            with self.subTest(name):
                self.assertEqual(len(self.faults({name: text})), check_sources.MOST_LINES + 1)
                (self.top / name).unlink()

    def test_a_part_of_a_word_is_not_the_word(self):
        words = "foretell givesome behindhand in handy at handover teller\n"
        self.assertEqual(self.faults({"README.md": words * (check_sources.MOST_LINES + 1)}), [])

    def test_an_include_in_a_comment_is_none(self):
        self.assertEqual(
            self.faults({
                "tly/run/tly_exe.h": "",
                "src/xml/BaseVisitor.cpp": '// #include "tly_exe.h"\n/*\n#include "tly_exe.h"\n*/\n'
                'const char* url = "http://x";\n',
            }),
            [],
        )

    def test_lines_are_right_after_comments(self):
        self.assertEqual(
            self.faults({"tly/run/tly_exe.h": "", "src/xml/BaseVisitor.cpp": '/* a\n   b */\n#include "tly_exe.h"\n'}),
            ["src/xml/BaseVisitor.cpp:3: src/xml must not include tly_exe.h of tly/run"],
        )

    def test_a_header_beside_the_file_comes_first(self):
        self.assertEqual(
            self.faults({"tests/help.h": "", "tools/zanl_profile/help.h": "",
                        "tools/zanl_profile/main.cpp": '#include "help.h"\n'}),
            [],
        )

    def test_sql_with_values_in_its_text(self):
        fault = "SQL is joined with other texts; bind values to its parameters"
        code = {
            1: 'database.execute("DELETE FROM run WHERE id = \'" + id + "\'");\n',
            2: 'std::string sql =\n    "SELECT " + name;\n',
            4: 'auto sql = fmt::format("INSERT INTO t VALUES ({})", value);\n',
            5: 'sql += "UPDATE t";\n',
            6: 'Statement find(database, R"(\nSELECT a FROM t WHERE b = )" + value);\n',
        }
        found = [one for one in self.faults({"profile/database/a.cpp": "".join(code.values())}) if one.endswith(fault)]
        self.assertEqual(found, [f"profile/database/a.cpp:{line}: {fault}" for line in (1, 3, 4, 5, 6)])

    def test_sql_of_constants_is_fine(self):
        found = self.faults({
            "profile/database/a.cpp": 'Statement find(database, "SELECT a FROM t "\n                         "WHERE b = ? + 1; DROP");\n'
            'int b = 1 + 2;\nsum += b;\ntext += "SELECTED";\n',
            "profile/export/b.cpp": '// SQL without values: the names are those of our tables.\nsql = "INSERT INTO " + name;\n',
            "tests/profile/c.cpp": 'sql = "SELECT " + name;\n',
        })
        self.assertEqual([one for one in found if "SQL" in one], [])

    def test_a_layout_that_clang_format_would_change(self):
        self.assertEqual(
            self.faults({"tly/base/a.cpp": "int a;\nint   b;\nint   c;\n"}),
            ["tly/base/a.cpp:2: laid out otherwise than .clang-format says; run ./dev format"],
        )

    def test_a_broken_clang_format_file_is_a_fault(self):
        (self.top / ".clang-format").write_text("BasedOnStyle: Unknown\n")
        self.assertEqual(len(self.faults({"tly/base/a.cpp": "int a;\n"})), 1)

    def test_the_program_prints_faults_and_fails_with_its_status(self):
        def run():
            command = [sys.executable, check_sources.__file__, str(self.top)]
            return subprocess.run(command, text=True, capture_output=True)

        self.assertEqual(run().returncode, 0)
        self.faults({"tly/base/a.h": '#include "a.h"\n'})
        self.assertEqual((run().returncode, run().stdout), (1, "tly/base/a.h:1: include cycle: tly/base/a.h -> tly/base/a.h\n"))


if __name__ == "__main__":
    unittest.main()
