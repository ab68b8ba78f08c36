#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""examples/fleet/postgres with many runs: a history, and samples in PostgreSQL, with the queries of docs/fleet.md.

The server is one of its own in a temporary folder. Runs and exports are made up and not kept. Prints rows a second and bytes a
row, and seconds of each question on the clock: the median over the rounds, with one connection for all.
"""

import argparse
import pathlib
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import time

import measure_history

sys.path.insert(0, str(measure_history.TOP / "tests" / "fleet"))
import postgres_server  # pylint: disable=wrong-import-position

# It waits for the disk, as by default.
SETTINGS = "-c max_wal_size=4GB -c checkpoint_timeout=15min -c shared_buffers=512MB -c maintenance_work_mem=256MB"
SAMPLES_OF_RUN = 1000000
NUM_BLOCKS, METRICS = 27, ("valid", "stall", "idle", "requests", "bandwidth")
MONTHS = 12
HEADERS = {
    "run": "run_id,schema_version,input,program_version,package_version,board,clock_mhz,tick_ns,start_ticks,num_nan,num_inf,span_ns,span_ticks",
    "invocation": "run_id,invocation_id,kernel_id,start_ticks,end_ticks,samples",
    "sample": "run_id,invocation_id,block_id,metric,i,t,value",
    "port_sample": "run_id,invocation_id,port_id,metric,i,t,value",
}
SAMPLES_OF_MONTH = (
    "SELECT s.block_id, 100 * sum(s.value) / sum(c.value) FROM export.sample s JOIN export.sample c ON c.run_date = s.run_date "
    "AND c.run_id = s.run_id AND c.invocation_id = s.invocation_id AND c.block_id IS NULL AND c.metric = 'cycles' AND c.i = s.i "
    "WHERE s.run_date >= '2026-03-01' AND s.run_date < '2026-04-01' AND s.metric = 'stall' GROUP BY s.block_id"
)
SAMPLES_OF_RUN_QUERY = "SELECT metric, count(*), sum(value) FROM export.sample WHERE run_id = 3 GROUP BY metric"


def sample_lines(count):
    """Rows of samples without the number of their run: the cycles of a kernel and five counters of 27 blocks each."""
    lines, i = [], 0
    while len(lines) < count:
        lines.append(f",1,,cycles,{i},{i * 500 + 500},125")
        for block in range(1, NUM_BLOCKS + 1):
            lines += [f",1,{block},{metric},{i},{i * 500 + 500},{(i * 7 + block * 13 + k * 31) % 125}" for k, metric in enumerate(METRICS)]
        i += 1
    return lines[:count]


def write_export(folder, number, lines):
    """An export with tables of the columns that the server knows; those without rows are taken from a real one."""
    rows = {"run": [f"{number},1,run.json,2026.1.0,4.2.0 Build 117,vela,250,1,{number},0,0,5000000,"],
            "invocation": [f"{number},1,1,{number},5000000,{len(lines)}"], "port_sample": []}
    for table, of_table in rows.items():
        (folder / f"{table}.csv").write_text("\r\n".join([HEADERS[table], *of_table, ""]), encoding="utf-8")
    end = "\r\n" + str(number)
    (folder / "sample.csv").write_text(HEADERS["sample"] + end + end.join(lines) + "\r\n", encoding="utf-8")


def empty_tables(toolbox, folder):
    """The other tables, with their columns alone."""
    report = measure_history.TOP / "samples" / "vector_add" / "expected_report.json"
    subprocess.run([toolbox, "-q", "export", report, "--to", "csv", "-o", folder], check=True)
    for path in folder.glob("*.csv"):
        path.write_bytes(path.read_bytes().split(b"\r\n", maxsplit=1)[0] + b"\r\n")


def milliseconds_of(server, queries, rounds):
    """The time of each query, by psql's own clock."""
    script = "SET search_path = history;\n\\timing on\n" + "".join(f"\\o /dev/null\n{query.strip().rstrip(';')};\n\\o\n" for query in queries * rounds)
    asked = subprocess.run(["psql", "-X", "-q", "-v", "ON_ERROR_STOP=1"], input=script, env=server.environment, text=True, capture_output=True, check=True)
    times = [float(time) for time in re.findall(r"^Time: ([\d.]+) ms", asked.stdout, re.MULTILINE)]
    assert len(times) == len(queries) * rounds, asked.stdout
    return [statistics.median(times[k :: len(queries)]) for k in range(len(queries))]


def show(server, questions, rounds):
    for title, taken in zip(questions, milliseconds_of(server, list(questions.values()), rounds)):
        print(f"| {title} | {taken / 1000:.3f} |", flush=True)


def load_history(server, toolbox, folder, count, rounds):
    names = measure_history.make_runs(folder, count)
    measure_history.add_days(toolbox, folder / "runs.db", names)
    clock = measure_history.seconds_of(lambda: postgres_server.load(server, "load_history.sh", folder / "runs.db"))[0]
    num_values = server.counts(["history.value"])["history.value"]
    again = measure_history.seconds_of(lambda: postgres_server.load(server, "load_history.sh", folder / "runs.db"))[0]
    server.rows("VACUUM ANALYZE")
    size = server.rows("SELECT sum(pg_total_relation_size(oid)) FROM pg_class WHERE relkind = 'r' AND relnamespace = 'history'::regnamespace")
    print(f"{count} runs, {num_values:.0f} values: loaded in {clock:.1f} s, again in {again:.1f} s; {size[0][0] / count:.0f} bytes a run")
    print("\n| question | seconds |\n|---|---|")
    show(server, dict(measure_history.queries()), rounds)


def load_samples(server, toolbox, folder, count, rounds):
    folder.mkdir()
    empty_tables(toolbox, folder / "export")
    lines, taken = sample_lines(SAMPLES_OF_RUN), 0
    for number in range(1, count // SAMPLES_OF_RUN + 1):
        write_export(folder / "export", number, lines)
        begin = time.monotonic()
        postgres_server.load(server, "load_exports.sh", f"2026-{number % MONTHS + 1:02}-15", folder / "export")
        taken += time.monotonic() - begin
    size = server.rows("SELECT sum(pg_total_relation_size(inhrelid)) FROM pg_inherits WHERE inhparent = 'export.sample'::regclass")[0][0]
    print(f"\n{count} samples in {taken:.0f} s: {count / taken:.0f} a second, {size / count:.1f} bytes each\n\n| question | seconds |\n|---|---|")
    server.rows("ANALYZE export.sample")
    show(server, {"A run's samples by metric": SAMPLES_OF_RUN_QUERY, "The stalls of a month, block by block": SAMPLES_OF_MONTH}, rounds)
    show(server, dict(measure_history.queries()), rounds)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help="folder of the programs")
    parser.add_argument("--runs", type=int, default=10000, help="runs of the history")
    parser.add_argument("--samples", type=int, default=100000000, help="samples, which take 80 bytes each on the disk")
    parser.add_argument("--rounds", type=int, default=3)
    arguments = parser.parse_args()
    # So that the server ends as well.
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    toolbox = arguments.build.resolve() / "tools" / "zanl_profile" / "zanl-profile"
    with tempfile.TemporaryDirectory() as name, postgres_server.Server(SETTINGS) as server:
        status, output = server.run("psql", "-X", "-q", "-f", str(postgres_server.SCRIPTS / "schema.sql"))
        assert status == 0, output
        load_history(server, toolbox, pathlib.Path(name), arguments.runs, arguments.rounds)
        load_samples(server, toolbox, pathlib.Path(name) / "samples", arguments.samples, arguments.rounds)


if __name__ == "__main__":
    main()
