# SPDX-License-Identifier: Apache-2.0
"""Whole runs of zanl-profile-tly on the workloads: made, measured, and counted. The comparisons share it."""

import collections
import pathlib
import re
import subprocess

TOP = pathlib.Path(__file__).resolve().parent.parent
SHAPES = ["S", "L", "M", "W", "A", "X"]
PROCESS_BYTES = 8 << 20
# The hot loops, by the names of their functions. The first row that fits takes a function.
HOT_LOOPS = [
    ("fields to numbers", r"PlainFields::|MonLine::split|read_field"),
    ("numbers to lists", r"decode_column|append_lines|TlyModuleInst::updateCounters|Sample(Buffer|List)<.*append"),
    ("metrics", r"write_details|write_port_metrics|megabytes_per_second|average_channel_depth"),
    ("numbers to text", r"write_number|write_group|write_separated|Sample(List|Buffer)<.*::read"),
    ("description", r"tinyxml2|zan::|import_profiler|meaning_of_tag"),
]

# Times in seconds, `memory` is the most that was held, in bytes, and `faults` counts pages that were first touched.
Measured = collections.namedtuple("Measured", "wall processor memory faults")


def measured_of(line):
    """The line that `measure --faults` prints."""
    wall, processor, kib, faults = line.split()
    return Measured(float(wall), float(processor), int(kib) * 1024, int(faults))


def run(measure, *command, output=None):
    """What the command takes. Its output goes to a new file `output`, if one is named."""
    options = ["--faults", *(["--output", output] if output else [])]
    done = subprocess.run([measure, *options, *command], text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))} ended with {done.returncode}")
    return measured_of(done.stdout)


def count_values(report):
    """Lines of the report that hold a value: they end in a quote, or a quote and a comma."""
    values, tail = 0, b""
    with open(report, "rb") as file:
        while block := file.read(1 << 24):
            block = tail + block
            values += block.count(b'",\n') + block.count(b'"\n')
            tail = block[-2:]
            values -= tail.count(b'"\n') + tail.count(b'",\n')
    return values + (tail == b'"\n')


class Workload:
    def __init__(self, build, folder, shape, numbers=()):
        self.bench = build / "bench"
        self.program = build / "zanl-profile-tly"
        self.folder = pathlib.Path(folder)
        arguments = [f"{name}={number}" for name, number in dict(numbers).items()]
        subprocess.run([self.bench / "workloads", shape, folder, *arguments], check=True)
        self.report = self.folder / "report.json"
        self.files = [self.folder / "design.zanx", self.folder / "profile.mon", self.report]

    def run(self, *command, written=None, output=None):
        """What a command takes that makes the file `written`; to write over a file would wait for the disk."""
        if written:
            written.unlink(missing_ok=True)
        return run(self.bench / "measure", *command, output=output)

    def run_program(self):
        return self.run(self.program, *self.files, written=self.report)

    def stages(self):
        text = subprocess.run([self.bench / "stages", *self.files], check=True, text=True, capture_output=True).stdout
        return {name: float(ms) for name, ms in re.findall(r"^(\S+) ([\d.]+)$", text, re.MULTILINE)}


    def instructions(self):
        """What callgrind counts for a run, as text."""
        counts = self.folder / "counts"
        valgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={counts}", self.program, *self.files]
        subprocess.run(valgrind, check=True, capture_output=True)
        annotate = ["callgrind_annotate", "--threshold=100", counts]
        return subprocess.run(annotate, check=True, text=True, capture_output=True).stdout


def instructions_of(text):
    """All instructions in a text of callgrind_annotate, and those of each hot loop by its name."""
    total, sums = 0, dict.fromkeys([name for name, _ in HOT_LOOPS], 0)
    for count, function in re.findall(r"^ *([\d,]+) \([ \d.]+%\)  (.*)$", text, re.MULTILINE):
        number = int(count.replace(",", ""))
        if function == "PROGRAM TOTALS":
            total = number
            continue
        loop = next((name for name, pattern in HOT_LOOPS if re.search(pattern, function)), None)
        if loop:
            sums[loop] += number
    return total, sums


def share_of(stages):
    """The stages' times as shares, as a text."""
    return ", ".join(f"{name} {ms / sum(stages.values()):.0%}" for name, ms in stages.items())


def bytes_a_value(memory, values):
    """What is held beyond the process itself."""
    return max(0, memory - PROCESS_BYTES) / values
