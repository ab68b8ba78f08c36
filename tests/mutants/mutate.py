#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes small faults in the sources, one at a time, and runs the tests that have to notice.

usage: mutate.py [--count N] [--seed N] [--build FOLDER] [--again MUTANT] [--summary]

The mutants are drawn by a fixed random seed, so that each run draws the same ones. Results are kept in
FOLDER/results.jsonl, a line for each mutant, and a run goes on where the one before stopped. The work tree isn't
touched: its sources are copied to FOLDER/sources, where the faults are made. Each mutant takes one source to compile, and
the test programs of its folder until one of them fails: of each first the tests of the source itself, then those of its
folder, then all.

With --summary: the numbers by folder, and the mutants that survived. With --again: one mutant once more, by its number.
"""

import argparse
import collections
import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(TOP / "tests"))
from source_copy import update_copy  # noqa: E402

# Test programs by the folder of the source, those that notice most first.
PROGRAMS = {
    "lib/pkg_editor/src": ["pkg_editor_test", "pkg_stream_test", "zanl_profile_test"],
    "src/xml": ["zan_xml_test", "zan_profiler_test", "zan_board_test"],
    "zan_profiler": ["zan_profiler_test", "tly_read_test"],
    "src/profiler": ["zan_profiler_test", "tly_read_test", "end_to_end_test"],
    "src/board": ["zan_board_test", "end_to_end_test"],
    "profile": ["zan_profile_test", "zanl_profile_test"],
    "tly/base": ["tly_model_test", "tly_report_test", "tly_read_test", "end_to_end_test"],
    "tly/model": ["tly_model_test", "tly_report_test", "tly_read_test", "end_to_end_test", "differential_test",
                  "tly_allocation_test"],
    "tly/report": ["tly_report_test", "tly_read_test", "end_to_end_test", "differential_test", "tly_allocation_test"],
    "tly/read": ["tly_read_test", "end_to_end_test", "differential_test", "tly_allocation_test",
                 "system_call_faults_test"],
    "tly/run": ["tly_read_test", "end_to_end_test", "system_call_faults_test"],
    "tools/zanl_profile": ["zanl_profile_test", "system_call_faults_test", "signals_test"],
}
# Tests that take long, and that no other fault than one of sizes or times would reach.
FILTERS = {"pkg_stream_test": "--gtest_filter=-Pack.TenThousandFilesArePackedAndComeBack"}
# Where a program is, if not in `tests`.
PLACES = {"end_to_end_test": "end_to_end", "differential_test": "differential", "system_call_faults_test": "faults",
          "signals_test": "faults"}

# What a mutant changes: a name, what is looked for in a line of code, and what takes its place.
CHANGES = [
    ("comparison", re.compile(r"(?<=\s)(<|>)(?=\s)"), lambda m: m[0] + "="),
    ("comparison", re.compile(r"(?<=\s)(<=|>=)(?=\s)"), lambda m: m[0][0]),
    ("equality", re.compile(r"(?<=\s)(==|!=)(?=\s)"), lambda m: "!=" if m[0] == "==" else "=="),
    ("logic", re.compile(r"(?<=\s)(&&|\|\|)(?=\s)"), lambda m: "||" if m[0] == "&&" else "&&"),
    ("negation", re.compile(r"(?<=[(\s])!(?=[\w(])"), lambda m: ""),
    ("arithmetic", re.compile(r"(?<=\s)[+-](?=\s)"), lambda m: "-" if m[0] == "+" else "+"),
    ("assignment", re.compile(r"(?<=\s)(\+=|-=)(?=\s)"), lambda m: "-=" if m[0] == "+=" else "+="),
    ("number", re.compile(r"(?<![\w.'\"])\d+(?![\w.'])"), lambda m: str(int(m[0]) + 1)),
    ("truth", re.compile(r"\b(true|false)\b"), lambda m: "false" if m[0] == "true" else "true"),
    ("call left out", re.compile(r"^(\s+)[a-z_][\w.:>-]*\([^{}]*\);$"), lambda m: m[1] + ";"),
    ("step left out", re.compile(r"(?<=^\s{4})(\s*)(\+\+|--)[\w.]+;$"), lambda m: m[1] + ";"),
]

SUITE = re.compile(r"^TEST(?:_F|_P)?\((\w+),", re.MULTILINE)

Mutant = collections.namedtuple("Mutant", "file line column kind before after")


def code_of(line):
    """The line with blanks in place of texts, characters and comments."""
    line = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', lambda m: " " * len(m[0]), line)
    comment = line.find("//")
    return line if comment < 0 else line[:comment]


def mutants_of(file, text):
    """All mutants of a source."""
    found = []
    for number, line in enumerate(text.split("\n"), 1):
        code = code_of(line)
        if code.lstrip().startswith(("#", "template", "static_assert", "using ", "namespace")):
            continue
        for kind, pattern, replacement in CHANGES:
            for match in pattern.finditer(code):
                begin, end = match.span()
                after = line[:begin] + replacement(match) + line[end:]
                found.append(Mutant(file, number, begin + 1, kind, line.strip(), after.strip()))
    return found


def with_mutant(text, mutant):
    lines = text.split("\n")
    line = lines[mutant.line - 1]
    indent = line[: len(line) - len(line.lstrip())]
    lines[mutant.line - 1] = indent + mutant.after
    return "\n".join(lines)


def programs_of(file):
    folder = max((f for f in PROGRAMS if file.startswith(f + "/")), key=len)
    return PROGRAMS[folder]


def draw(sources, count, seed):
    """`count` mutants of the sources, a dictionary of texts by file. A place of a file is as likely as any other of any
    file, and its rank depends on nothing but the seed and itself, so that a change elsewhere leaves it as it is."""
    every = {str(key_of(mutant)): mutant for file in sorted(sources) for mutant in mutants_of(file, sources[file])}
    ranked = sorted(every, key=lambda key: hashlib.sha256(f"{seed} {key}".encode()).digest())
    return [every[key] for key in ranked[:count]]


def read_sources(top):
    files = [path for folder in PROGRAMS for path in (top / folder).rglob("*.cpp")]
    return {str(path.relative_to(top)): path.read_text() for path in files}


class Bench:
    """A copy of the sources with its build, where mutants are tried."""

    def __init__(self, folder):
        self.sources, self.build = folder / "sources", folder / "build"
        self.limits = {}  # seconds that a program may take

    def prepare(self):
        update_copy(TOP, self.sources)
        if not (self.build / "build.ninja").is_file():
            launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
            # Sources one by one, so that a mutant compiles only its own.
            options = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_CXX_COMPILER=clang++",
                       "-DCMAKE_UNITY_BUILD=ON", "-DZAN_BUILD_BENCH=OFF", "-DZAN_TESTS_BY_NAME=OFF", "-DZAN_HARDENED=OFF",
                       "-DZAN_NOT_JOINED=pkg_editor;zan_xml;zan_profiler;zan_board;tly;zan_profile;zanl_profile", *launcher]
            subprocess.run(["cmake", "-G", "Ninja", "-S", self.sources, "-B", self.build, *options], check=True,
                           stdout=subprocess.DEVNULL)

    def try_without_mutant(self, program):
        """Sees that the program can be built and passes, and how long it takes."""
        if program in self.limits:
            return
        if not self.make(program):
            raise SystemExit(f"{program} can't be built")
        begin = time.monotonic()
        if not self.passes(program):
            raise SystemExit(f"{program} fails without a mutant")
        self.limits[program] = 20 + 8 * (time.monotonic() - begin)

    def make(self, program):
        result = subprocess.run(["ninja", "-C", self.build, "-j2", program], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT)
        return result.returncode == 0

    def passes(self, program, choice=None):
        """`choice`: the filter of the tests to run; None for all."""
        path = self.build / "tests" / PLACES.get(program, "") / program
        command = [path, "--gtest_fail_fast", "--gtest_brief=1", *filter(None, [choice or FILTERS.get(program)])]
        # A process group of its own, so that what a mutant leaves running ends with it.
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   stdin=subprocess.DEVNULL, cwd=path.parent, start_new_session=True)
        try:
            return process.wait(self.limits.get(program, 600)) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            try:
                os.killpg(process.pid, 9)
            except ProcessLookupError:
                pass
            process.wait()

    def outcome(self, mutant):
        """'killed by PROGRAM', 'not compiled' or 'survived'."""
        path = self.sources / mutant.file
        text = path.read_text()
        for program in programs_of(mutant.file):
            self.try_without_mutant(program)
            # Written anew for each program, which takes no longer where a compiler's results are kept.
            path.write_text(with_mutant(text, mutant))
            try:
                if not self.make(program):
                    return "not compiled"
                if not all(self.passes(program, choice) for choice in [*choices_of(mutant.file, self.sources), None]):
                    return "killed by " + program
            finally:
                path.write_text(text)
        return "survived"


def choices_of(file, top):
    """Filters for the tests of a source, and for those of its folder; without the ones that would choose nothing. A
    program that has none of them passes at once."""
    folder = top / "tests" / pathlib.Path(file).parent
    stem = pathlib.Path(file).stem
    of_source = sorted(folder.glob(f"{stem}*_test.cpp"))
    of_folder = sorted(folder.glob("*_test.cpp"))
    for tests in (of_source, of_folder):
        suites = {suite for test in tests for suite in SUITE.findall(test.read_text())}
        if suites:
            yield "--gtest_filter=" + ":".join(f"{suite}.*:*/{suite}.*" for suite in sorted(suites))


def key_of(mutant):
    return [mutant.file, mutant.column, mutant.kind, mutant.before, mutant.after]


def read_results(file):
    return [json.loads(line) for line in file.read_text().splitlines()] if file.is_file() else []


def append_result(results_file, number, mutant, outcome):
    result = {"number": number, "line": mutant.line, "mutant": key_of(mutant), "outcome": outcome}
    with results_file.open("a") as file:
        file.write(json.dumps(result) + "\n")


def try_all(mutants, folder, results_file):
    known = [result["mutant"] for result in read_results(results_file)]
    bench = None
    for number, mutant in enumerate(mutants, 1):
        if key_of(mutant) in known:
            continue
        if bench is None:
            bench = Bench(folder)
            bench.prepare()
        outcome = bench.outcome(mutant)
        append_result(results_file, number, mutant, outcome)
        print(f"{number} {mutant.file}:{mutant.line} {mutant.kind}: {outcome}", flush=True)


def summary(results):
    """Rows of a table by folder, and the survivors."""
    rows = collections.defaultdict(collections.Counter)
    for result in results:
        folder = result["mutant"][0].rpartition("/")[0]
        rows[folder][result["outcome"].split(" by ")[0]] += 1
    lines = ["| folder | compiled | killed | survived |", "|---|---|---|---|"]
    for folder in sorted(rows):
        killed, survived = rows[folder]["killed"], rows[folder]["survived"]
        lines.append(f"| `{folder}` | {killed + survived} | {killed} | {survived} |")
    for result in results:
        if result["outcome"] == "survived":
            file, _, kind, before, after = result["mutant"]
            lines.append(f"{result['number']} {file}:{result['line']} {kind}\n    {before}\n    {after}")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--build", type=pathlib.Path, default=TOP / "build" / "mutants")
    parser.add_argument("--again", type=int)
    parser.add_argument("--summary", action="store_true")
    options = parser.parse_args()
    # A shell starts what it runs in the background with these ignored, and so would all tests be.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.signal(signal.SIGQUIT, signal.SIG_DFL)
    options.build.mkdir(parents=True, exist_ok=True)
    results_file = options.build / "results.jsonl"
    if options.summary:
        print(summary(read_results(results_file)))
        return
    mutants = draw(read_sources(TOP), options.count, options.seed)
    if options.again:
        bench = Bench(options.build)
        bench.prepare()
        print(mutants[options.again - 1], bench.outcome(mutants[options.again - 1]))
        return
    try_all(mutants, options.build, results_file)


if __name__ == "__main__":
    sys.exit(main())
