"""Proves that check_sources.py tells each kind of fault, and nothing where there is none."""

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
                "src/BaseVisitor.h": "#include <tinyxml2.h>\n",
                "src/BoardSpecXml.h": '#include "BaseVisitor.h"\n',
                "zan_profiler/ProfilerConfig.h": '#include "contract.h"\n',
                "src/ProfilerConfigXml.h": '#include "BaseVisitor.h"\n#include "ProfilerConfig.h"\n',
                "tly/tly_parse.cpp": '#include "BoardSpecXml.h"\n#include "pkg_editor.h"\n',
                "tly/tly_exe.h": "",
                "tools/zanl_profile/run.cpp": '#include "BoardSpecXml.h"\n#include "tly_exe.h"\n',
                "tests/a_test.cpp": "#include <tinyxml2.h>\n\n#include \"tly_exe.h\"\n",
            }),
            [],
        )

    def test_an_include_against_the_direction(self):
        self.assertEqual(
            self.faults({"tly/tly_exe.h": "", "src/BaseVisitor.cpp": '\n#include "tly_exe.h"\n'}),
            ["src/BaseVisitor.cpp:2: zan_xml must not include tly_exe.h of tly"],
        )

    def test_an_include_against_the_direction_in_angle_brackets(self):
        self.assertEqual(
            self.faults({"tly/tly_exe.h": "", "src/BaseVisitor.cpp": "#include <tly_exe.h>\n"}),
            ["src/BaseVisitor.cpp:1: zan_xml must not include tly_exe.h of tly"],
        )

    def test_description_libraries_dont_know_each_other_nor_the_package(self):
        self.assertEqual(
            self.faults({
                "src/BoardSpec.h": "",
                "src/ProfilerConfigXml.h": "",
                "lib/pkg_editor/src/pkg_editor.h": "",
                "src/BoardSpec.cpp": '#include "ProfilerConfigXml.h"\n',
                "zan_profiler/ProfilerConfig.h": '#include "BoardSpec.h"\n#include "pkg_editor.h"\n',
            }),
            [
                "src/BoardSpec.cpp:1: zan_board must not include ProfilerConfigXml.h of zan_profiler",
                "zan_profiler/ProfilerConfig.h:1: zan_profiler must not include BoardSpec.h of zan_board",
                "zan_profiler/ProfilerConfig.h:2: zan_profiler must not include pkg_editor.h of pkg_editor",
            ],
        )

    def test_nobody_includes_tests(self):
        self.assertEqual(
            self.faults({"tests/support/help.h": "", "tools/zanl_profile/main.cpp": '#include "help.h"\n'}),
            ["tools/zanl_profile/main.cpp:1: tools must not include help.h of tests"],
        )

    def test_packages_know_no_xml(self):
        self.assertEqual(
            self.faults({"lib/pkg_editor/src/pkg_editor.cpp": "#include <libelf.h>\n#include <tinyxml2.h>\n"}),
            [
                "lib/pkg_editor/src/pkg_editor.cpp:2: pkg_editor must not know tinyxml2.h; "
                "only zan_board, zan_profiler, zan_xml may"
            ],
        )

    def test_only_the_parsers_join_the_libraries(self):
        self.assertEqual(
            self.faults({"lib/pkg_editor/src/pkg_editor.h": "", "tly/tly_exe.cpp": '#include "pkg_editor.h"\n'}),
            ["tly/tly_exe.cpp:1: only tly/tly_parse* joins the libraries; this is pkg_editor.h of pkg_editor"],
        )

    def test_a_lower_layer_of_tly_doesnt_know_a_higher_one(self):
        self.assertEqual(
            self.faults({"tly/tly_parse.h": "", "tly/tly_exe.h": "", "tly/tly_json.cpp": '#include "tly_parse.h"\n',
                        "tly/tly_parse.cpp": '#include "tly_exe.h"\n'}),
            [
                "tly/tly_json.cpp:1: the report must not include tly_parse.h of the readers",
                "tly/tly_parse.cpp:1: the readers must not include tly_exe.h of the run driver",
            ],
        )

    def test_the_model_knows_no_json(self):
        self.assertEqual(
            self.faults({"tly/report_tree.h": "", "tly/tly_ext_mem.h": '#include "report_tree.h"\n'}),
            ["tly/tly_ext_mem.h:1: the model must not include report_tree.h of the report"],
        )

    def test_the_model_knows_no_json_of_boost(self):
        self.assertEqual(
            self.faults({"tly/metrics.cpp": "#include <boost/property_tree/ptree.hpp>\n"}),
            ["tly/metrics.cpp:1: the model must not know JSON, and this leads to it: boost/property_tree/ptree.hpp"],
        )

    def test_the_kernel_alone_knows_json_and_nobody_gets_it_through_the_kernel(self):
        self.assertEqual(
            self.faults({
                "tly/report_tree.h": "",
                "tly/tly_kernel.h": '#include "report_tree.h"\n',
                "tly/tly_module_inst.cpp": '#include "tly_kernel.h"\n',
            }),
            [
                "tly/tly_module_inst.cpp:1: the model must not know JSON, and this leads to it: "
                "tly_kernel.h -> report_tree.h"
            ],
        )

    def test_a_file_of_no_library(self):
        self.assertEqual(
            self.faults({"src/Helper.h": ""}),
            ["src/Helper.h:1: belongs to no library; name it in LIBRARY_OF of tests/check_sources.py"],
        )

    def test_a_cycle_is_told_once(self):
        self.assertEqual(
            self.faults({
                "tly/a.h": '#include "b.h"\n',
                "tly/b.h": '\n#include "c.h"\n',
                "tly/c.h": '#include "a.h"\n',
            }),
            ["tly/c.h:1: include cycle: tly/a.h -> tly/b.h -> tly/c.h -> tly/a.h"],
        )

    def test_a_file_that_includes_itself(self):
        self.assertEqual(self.faults({"tly/a.h": '#include "a.h"\n'}), ["tly/a.h:1: include cycle: tly/a.h -> tly/a.h"])

    def test_a_diamond_is_no_cycle(self):
        self.assertEqual(
            self.faults({"tly/a.h": '#include "b.h"\n#include "c.h"\n', "tly/b.h": '#include "d.h"\n',
                        "tly/c.h": '#include "d.h"\n', "tly/d.h": ""}),
            [],
        )

    def test_an_include_in_a_comment_is_none(self):
        self.assertEqual(
            self.faults({
                "tly/tly_exe.h": "",
                "src/BaseVisitor.cpp": '// #include "tly_exe.h"\n/*\n#include "tly_exe.h"\n*/\n'
                'const char* url = "http://x";\n',
            }),
            [],
        )

    def test_lines_are_right_behind_comments(self):
        self.assertEqual(
            self.faults({"tly/tly_exe.h": "", "src/BaseVisitor.cpp": '/* a\n   b */\n#include "tly_exe.h"\n'}),
            ["src/BaseVisitor.cpp:3: zan_xml must not include tly_exe.h of tly"],
        )

    def test_a_header_beside_the_file_comes_first(self):
        self.assertEqual(
            self.faults({"tests/help.h": "", "tools/zanl_profile/help.h": "",
                        "tools/zanl_profile/main.cpp": '#include "help.h"\n'}),
            [],
        )

    def test_a_layout_that_clang_format_would_change(self):
        self.assertEqual(
            self.faults({"tly/a.cpp": "int a;\nint   b;\nint   c;\n"}),
            ["tly/a.cpp:2: laid out otherwise than .clang-format says; run ./dev format"],
        )

    def test_a_broken_clang_format_file_is_a_fault(self):
        (self.top / ".clang-format").write_text("BasedOnStyle: Nobody\n")
        self.assertEqual(len(self.faults({"tly/a.cpp": "int a;\n"})), 1)

    def test_the_program_prints_faults_and_tells_by_its_status(self):
        def run():
            command = [sys.executable, check_sources.__file__, str(self.top)]
            return subprocess.run(command, text=True, capture_output=True)

        self.assertEqual(run().returncode, 0)
        self.faults({"tly/a.h": '#include "a.h"\n'})
        self.assertEqual((run().returncode, run().stdout), (1, "tly/a.h:1: include cycle: tly/a.h -> tly/a.h\n"))


if __name__ == "__main__":
    unittest.main()
