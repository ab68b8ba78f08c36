#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`zanl-profile export` to all formats, beside `sqlite3 .import` of the same rows.

Each row is a format: megabytes of report a second of processor time, the median over the rounds, the peak memory, and the
size of what is written. The report is that of a run of the workload L.
"""

import argparse
import pathlib
import shlex
import statistics
import subprocess
import tempfile

IMPORT = ('rm -f import.db; sqlite3 import.db "PRAGMA journal_mode=OFF" "PRAGMA synchronous=OFF" '
          '"CREATE TABLE sample(run_id INTEGER, invocation_id INTEGER, block_id INTEGER, metric TEXT, i INTEGER, '
          't INTEGER, value REAL) STRICT" ".import --csv --skip 1 filled.csv sample"')


def measured(measure, command, folder):
    """Seconds of the processor, and the peak memory in MiB."""
    run = subprocess.run([measure, "/bin/sh", "-c", command], cwd=folder, text=True, stdout=subprocess.PIPE, check=True)
    _, processor, kibibytes = run.stdout.splitlines()[-1].split()
    return float(processor), float(kibibytes) / 1024


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help="folder of the programs")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--lines", type=int, default=20000, help="lines of the capture")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    export = shlex.quote(str(build / "tools" / "zanl_profile" / "zanl-profile")) + " export report.json"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([build / "bench" / "workloads", "L", folder, f"lines={arguments.lines}"], check=True)
        subprocess.run([build / "zanl-profile-tly", "design.zanx", "profile.mon", "report.json"], cwd=folder, check=True)
        size = (folder / "report.json").stat().st_size / 1e6
        commands = [("csv", f"{export} --to csv -o csv", "csv/sample.csv"),
                    ("sqlite", f"{export} --to sqlite -o run.db", "run.db"),
                    ("perfetto", f"{export} --to perfetto -o run.trace", "run.trace")]
        print(f"{size:.0f} MB of report\n\n| to | MB/s | MiB | MB written |\n|---|---|---|---|")
        for title, command, output in [*commands, ("sqlite3 .import", IMPORT, "import.db")]:
            if title == "sqlite3 .import":  # which takes no empty field for a number
                text = (folder / "csv" / "sample.csv").read_text()
                (folder / "filled.csv").write_text(text.replace(",,", ",0,").replace(",\n", ",0\n"))
            results = [measured(build / "bench" / "measure", command, folder) for _ in range(arguments.rounds)]
            seconds = statistics.median(result[0] for result in results)
            memory = statistics.median(result[1] for result in results)
            written = (folder / output).stat().st_size / 1e6
            print(f"| {title} | {size / seconds:.0f} | {memory:.0f} | {written:.0f} |", flush=True)


if __name__ == "__main__":
    main()
