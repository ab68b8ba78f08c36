# SPDX-License-Identifier: Apache-2.0
"""The pages describe what is there: links lead somewhere, and what they show of a report is in one."""

import os
import pathlib
import re
import runpy
import tempfile
import textwrap
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
NOT_PAGES = {".git", "build", "node_modules"}


def pages():
    found = TOP.rglob("*.md")
    return [page for page in found if not NOT_PAGES & set(page.relative_to(TOP).parts)]


def blocks(text):
    """The indented blocks of a page, without their indentation."""
    return [textwrap.dedent(block) for block in re.findall(r"(?:^    .*\n)+", text, re.MULTILINE)]


def anchors(page):
    """What a link to a headline of the page may have after the #."""
    headlines = re.findall(r"^#+ (.*)$", page.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", headline.lower()).replace(" ", "-") for headline in headlines}


def source_words():
    """What a name on a page may be: each word of the sources, and the name of each source file."""
    folders = ["lib", "src", "zan_profiler", "tly", "tools", "tests", "bench", "fuzz", "cmake", "viewer", "profile", "dev.d"]
    files = [file for folder in folders for file in (TOP / folder).rglob("*")]
    files += [TOP / name for name in ("dev", "CMakeLists.txt", "CMakePresets.json", ".clang-tidy")]
    files = [file for file in files
             if file.is_file() and file.suffix not in {".md", ".pyc"} and file.name != "docs_test.py"
             and "node_modules" not in file.parts]
    words = {file.stem for file in files}
    for file in files:
        words.update(re.findall(r"\w+", file.read_text(errors="replace")))
    return words


def files_of_walks():
    """The paths of the files that walks add to the tree."""
    patches = (TOP / "tests" / "walks").glob("*.patch")
    return {path for patch in patches for path in re.findall(r"^--- /dev/null\n\+\+\+ b/(\S+)$", patch.read_text(), re.MULTILINE)}


def missing_names(page, words):
    """Names in backticks on a page that are no path of the tree, or no word of its sources.

    A path has a slash or the ending of a file, and may have wildcards. In a name, `...` stands for any letters. What is
    made by a build or a walk, and text with blanks, is not looked at.
    """
    made = files_of_walks()
    text = re.sub(r"^    .*$", "", page.read_text(), flags=re.MULTILINE)
    for name in re.findall(r"`([^`\n]+)`", text):
        if " " in name or name.startswith(("build/", "/", "-")) or name in made:
            continue
        if re.search(r"/|\.(cpp|h|md|py|txt|case|json)$|^\.clang", name):
            if not list(TOP.glob(name.rstrip("/"))) and ("/" in name or not list(TOP.glob(f"*/**/{name}"))):
                yield name
        elif "..." in name:
            pattern = re.compile(r"\w+".join(re.escape(part) for part in name.split("...")))
            if not any(pattern.fullmatch(word) for word in words):
                yield name
        elif not all(word in words for word in re.findall(r"\w+", name)):
            yield name


class Docs(unittest.TestCase):
    def test_links_lead_to_files_and_headlines(self):
        for page in pages():
            for target in re.findall(r"\]\(([^):]+)\)", page.read_text()):
                path, _, anchor = target.partition("#")
                with self.subTest(page=str(page.relative_to(TOP)), target=target):
                    file = page.parent / path if path else page
                    self.assertTrue(file.exists())
                    if anchor:
                        self.assertIn(anchor, anchors(file))

    def test_a_stale_output_is_renewed_and_nothing_else(self):
        renewed = runpy.run_path(str(TOP / "docs" / "refresh"))["renewed"]
        page = "Text.\n\n<!-- output -->\n\n    $ echo a; echo; echo b\n    a\n\n    b\n\nMore.\n\n    $ echo c\n    d\n"
        for shown in (page, page.replace("    b", "    stale\n\n    lines")):
            self.assertEqual(renewed(shown, TOP, os.environ), page)

    def test_an_example_that_fails_is_found(self):
        failed_examples = runpy.run_path(str(TOP / "docs" / "refresh"))["failed_examples"]
        page = ("<!-- run -->\n\n    false\n    true\n\nText.\n\n<!-- run -->\n\n    echo a >f\n\n    cat f\n\n"
                "<!-- sql a.db -->\n\n    CREATE TABLE t (x);\n\nText.\n\n<!-- sql a.db -->\n\n    SELECT y FROM t;\n")
        with tempfile.TemporaryDirectory() as folder:
            failed = list(failed_examples(page, pathlib.Path(folder), os.environ))
        self.assertEqual(failed, ["false\ntrue\n", "SELECT y FROM t;\nno such column: y\n"])

    def test_outputs_on_pages_are_those_that_are_renewed(self):
        for page in [TOP / "README.md", *(TOP / "docs").glob("*.md")]:
            for before, block in re.findall(r"(.*)\n\n((?:    .*\n|\n(?=    ))+)", page.read_text()):
                lines = textwrap.dedent(block).splitlines()
                if lines[0].startswith("$ ") and not all(line.startswith("$ ") for line in lines):
                    # Made by docs/refresh, or compared with the command by another test.
                    file = re.fullmatch(r"<!-- output in (\S+) -->", before)
                    with self.subTest(page=str(page.relative_to(TOP)), block=lines[0]):
                        if file:
                            self.assertIn("\n".join(lines), (TOP / file[1]).read_text())
                        else:
                            self.assertEqual(before, "<!-- output -->")

    def test_the_piece_of_a_report_in_the_readme_is_in_the_report_of_the_sample(self):
        piece = next(block for block in blocks((TOP / "README.md").read_text()) if '"bandwidth_samples"' in block)
        report = (TOP / "samples" / "image_pipeline" / "expected_report.json").read_text()
        self.assertIn(textwrap.indent(piece, " " * 28), report)

    def test_lines_of_files_shown_with_a_sample_are_in_them(self):
        shown_lines = {"profile.mon": r"\d+,\d+,.*", "sections/profiler.xml": r"\s*<.*>"}
        for page in (TOP / "samples").glob("*/README.md"):
            shown = [line for block in blocks(page.read_text()) for line in block.splitlines()]
            for file, form in shown_lines.items():
                lines = {line.strip() for line in (page.parent / file).read_text().splitlines()}
                for line in shown:
                    if re.fullmatch(form, line):
                        with self.subTest(sample=page.parent.name, file=file, line=line):
                            self.assertIn(line.strip(), lines)

    def test_the_cycles_of_a_sample_last_as_long_as_its_time_stamps_say(self):
        for sample in (TOP / "samples").glob("*/profile.mon"):
            timing = (sample.parent / "sections" / "velmora_report").read_text()
            cycles_a_nanosecond = float(re.search(r"^Actual clock freq: (.*)$", timing, re.MULTILINE)[1]) / 1000
            previous = {}
            for number, line in enumerate(sample.read_text().splitlines(), 1):
                fields = line.split(",")
                if fields[2].startswith("."):
                    continue  # a transfer
                name, start, end, cycles = fields[2], int(fields[3]), int(fields[4]), int(fields[7])
                begin = previous.get((name, start), start)
                previous[name, start] = end
                with self.subTest(sample=sample.parent.name, line=number):
                    # The host takes each sample a little early or late.
                    self.assertAlmostEqual(cycles / cycles_a_nanosecond, end - begin, delta=0.02 * (end - begin))

    def test_the_table_of_samples_has_them_all(self):
        named = re.findall(r"^\| \[(\w+)\]\(\1\)", (TOP / "samples" / "README.md").read_text(), re.MULTILINE)
        self.assertCountEqual(named, [page.parent.name for page in (TOP / "samples").glob("*/profile.mon")])

    def test_the_commands_that_pages_name_are_commands_of_dev(self):
        commands = set(re.findall(r"^command_(\w+)\(\)", (TOP / "dev").read_text(), re.MULTILINE))
        for page in pages():
            for command in re.findall(r"\./dev (\w+)", page.read_text()):
                with self.subTest(page=str(page.relative_to(TOP)), command=command):
                    self.assertIn(command, commands)

    def test_paths_and_names_on_the_pages_for_developers_exist(self):
        words = source_words()
        for page in ("ARCHITECTURE.md", "CONTRIBUTING.md", "tests/COVERAGE.md"):
            with self.subTest(page=page):
                self.assertEqual(list(missing_names(TOP / page, words)), [])

    def test_the_table_of_folders_has_each_folder_of_sources(self):
        page = (TOP / "ARCHITECTURE.md").read_text()
        table = page[page.index("\n| folder | content |"):page.index("\n## What must hold")]
        named = {name for row in re.findall(r"^\|([^|]*)\|", table, re.MULTILINE) for name in re.findall(r"`([^`]+)`", row)}
        sources = [path for top in ("lib", "src", "zan_profiler", "tly", "profile", "tools")
                   for path in (TOP / top).rglob("*.cpp")]
        folders = {path.parent.relative_to(TOP).as_posix() for path in sources}
        self.assertEqual(folders - named, set())

    def test_a_name_that_is_missing_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder, "page.md")
            page.write_text("`dev` `tests/*_test.py` `docs_test.py` `known` `known::word()` `kn...` `build/demo/x` `a b`\n"
                            "`tests/no_*.py` `no_such.cpp` `tly/no_such/` `unknown` `known::unknown` `un...`\n\n    `c`\n")
            self.assertEqual(list(missing_names(page, {"dev", "known", "word"})),
                             ["tests/no_*.py", "no_such.cpp", "tly/no_such/", "unknown", "known::unknown", "un..."])

    def test_the_page_on_packages_names_the_functions_that_there_are(self):
        functions = r"\bzan_pkg_(?!file\b)\w+"
        header = set(re.findall(functions, (TOP / "lib" / "pkg_editor" / "src" / "pkg_editor.h").read_text()))
        self.assertEqual(set(re.findall(functions, (TOP / "docs" / "package.md").read_text())), header)


if __name__ == "__main__":
    unittest.main()
