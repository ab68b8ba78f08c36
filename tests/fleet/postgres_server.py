# SPDX-License-Identifier: Apache-2.0
"""examples/fleet/postgres on a real server: a cluster of its own in a temporary folder, on a socket there, without TCP.

Exports of all samples and histories are loaded twice. The queries of docs/fleet.md return the rows that SQLite returns.
"""

import csv
import io
import os
import pathlib
import pwd
import re
import shutil
import sqlite3
import subprocess
import tempfile

import history_queries
from daemons import NotStarted, kill
from fleet_pairs import TOP

SCRIPTS = TOP / "examples" / "fleet" / "postgres"
OLDEST_VERSION = 15
HISTORY_TABLES = ("history.run", "history.label", "history.series", "history.value")


def programs_folder():
    """Where the newest server has its programs, as Debian has them, or None."""
    found = [path.parent for path in pathlib.Path("/usr/lib/postgresql").glob("*/bin/initdb")]
    return max(found, key=lambda folder: int(folder.parent.name), default=None)


def why_not():
    folder = programs_folder()
    if not folder:
        return "initdb is missing"
    return "" if int(folder.parent.name) >= OLDEST_VERSION else f"PostgreSQL is older than {OLDEST_VERSION}"


class Server:
    """A cluster and its server, which ends with the block. It doesn't wait for the disk unless other settings are named."""

    def __init__(self, settings="-c fsync=off"):
        self.settings = settings

    def __enter__(self):
        # Short, as names of sockets are, and where the server's user may go.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zanl-server-"))
        self.user = {}
        if os.geteuid() == 0:  # the server refuses to run as root
            nobody = pwd.getpwnam("nobody")
            self.user = {"user": nobody.pw_uid, "group": nobody.pw_gid, "extra_groups": []}
            os.chown(self.folder, nobody.pw_uid, nobody.pw_gid)
        self.environment = dict(os.environ, LC_ALL="C", PGHOST=str(self.folder), PGUSER="fleet", PGDATABASE="postgres")
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        pid_file = self.folder / "data" / "postmaster.pid"
        if pid_file.exists():
            process = int(pid_file.read_text(encoding="utf-8").split("\n", maxsplit=1)[0])
            if self.control("stop", "-m", "immediate").returncode != 0:
                kill([process])
        shutil.rmtree(self.folder)

    def work(self, program, *arguments):
        return subprocess.run(
            [programs_folder() / program, *arguments], cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **self.user,
        )

    def control(self, *arguments):
        return self.work("pg_ctl", "-D", self.folder / "data", "-w", "-t", "60", "-l", self.folder / "log", *arguments)

    def start(self):
        options = f"-c listen_addresses='' -c unix_socket_directories={self.folder} {self.settings}"
        for made in (
            self.work("initdb", "-D", self.folder / "data", "-U", "fleet", "-A", "trust", "-E", "UTF8", "--no-locale", "-N"),
            self.control("-o", options, "start"),
        ):
            if made.returncode != 0:
                raise NotStarted(f"the server of PostgreSQL can't be started: {made.stdout.splitlines()[-1:]}")

    def run(self, *command):
        """The exit status of a command that uses the server, and all that it printed."""
        result = subprocess.run(
            command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            check=False,
        )
        return result.returncode, result.stdout

    def rows(self, query):
        """The rows of a query; what is a number is a float."""
        command = ["psql", "-X", "-q", "-t", "--csv", "-v", "ON_ERROR_STOP=1", "-c", "SET search_path = history", "-c", query]
        result = subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        assert result.returncode == 0, result.stderr
        return [tuple(number_or_text(field) for field in row) for row in csv.reader(io.StringIO(result.stdout))]

    def counts(self, tables):
        return {table: self.rows(f"SELECT count(*) FROM {table}")[0][0] for table in tables}


def number_or_text(field):
    try:
        return float(field)
    except ValueError:
        return field


def load(server, script, *arguments):
    status, output = server.run(SCRIPTS / script, *arguments)
    assert (status, output) == (0, ""), output


def check_queries(server, database):
    """Both databases return the same rows."""
    connection = sqlite3.connect(database)
    for title, query in history_queries.queries().items():
        found = server.rows(query)
        assert found == connection.execute(query).fetchall() == history_queries.EXPECTED[title], (title, found)


def check_histories(server, program, folder):
    """Two histories become one; each run is there once, however often it is loaded."""
    folder.mkdir()
    history_queries.make_history(program, folder)
    load(server, "load_history.sh", folder / "runs.db")
    check_queries(server, folder / "runs.db")
    # 4 runs with package and board; 2 kernels, a block, a memory and its peak; 4 · (1 + 1 + 2) values and 3 of blur.
    expected = {"history.run": 4, "history.label": 8, "history.series": 5, "history.value": 19}
    assert server.counts(HISTORY_TABLES) == expected
    load(server, "load_history.sh", folder / "runs.db")
    assert server.counts(HISTORY_TABLES) == expected
    check_queries(server, folder / "runs.db")
    check_merged(server, program, folder, expected)


def check_merged(server, program, folder, expected):
    """Another history is added, whose runs have other numbers; texts that mean something to SQL stay what they are."""
    # The run of the 16th is in both, here with a label; one is new.
    other = folder / "other"
    other.mkdir()
    history_queries.add_run(program, other, "2026-12-01", 119, "c", {"aggregate": 140}, 50, 900)
    history_queries.add_run(program, other, "2026-11-16", 116, "b", {"aggregate": 110, "blur": 9}, 20, 250)
    subprocess.run([program, "-q", "history", "add", "runs.db", "s.json", "--label", 'note=a, "b"'], cwd=other, check=True)
    load(server, "load_history.sh", other / "runs.db", "2026-12-02")
    assert server.counts(HISTORY_TABLES) == expected
    load(server, "load_history.sh", other / "runs.db")
    expected |= {"history.run": 5, "history.label": 8 + 2 + 1, "history.value": 19 + 4}
    assert server.counts(HISTORY_TABLES) == expected
    labelled = "SELECT date, value FROM label JOIN run ON number = run WHERE name = 'note'"
    assert server.rows(labelled) == [("2026-11-16", 'a, "b"')]
    values = "SELECT date, value.value FROM value JOIN run ON number = run JOIN series s ON s.number = series WHERE kernel = 'blur'"
    assert server.rows(values + " ORDER BY date") == [("2026-11-15", 7), ("2026-11-16", 9), ("2026-11-22T23:00:00", 6)]
    status, output = server.run(SCRIPTS / "load_history.sh", folder / "absent.db")
    assert status == 2 and "absent.db: there is no such file" in output, output

    odd = ("a\n\\.\nb", "'; DROP TABLE history.run; --", "\\N", "", '"')
    labels = [word for number, text in enumerate(odd) for word in ("--label", f"odd{number}={text}")]
    subprocess.run([program, "-q", "history", "add", "runs.db", "s.json", *labels], cwd=other, check=True)
    load(server, "load_history.sh", other / "runs.db")
    found = server.rows("SELECT 'value ' || value FROM label WHERE name LIKE 'odd_' ORDER BY name")
    assert found == [("value " + text,) for text in odd], found


def export_samples(program, folder):
    """An export of each sample as CSV, and as a database: the number of the run, and its folder."""
    exports = {}
    for number, report in enumerate(sorted((TOP / "samples").glob("*/expected_report.json")), 1):
        for form, name in (("csv", folder / f"run {number}"), ("sqlite", folder / f"{number}.db")):
            command = [program, "-q", "export", report, "--to", form, "--raw", "-o", name, "--run-id", str(number)]
            subprocess.run([word for word in command if form == "csv" or word != "--raw"], check=True)
        exports[number] = folder / f"run {number}"
    return exports


def check_run(server, folder, number, tables):
    """A run has as many rows as in SQLite, and the same samples."""
    connection = sqlite3.connect(folder / f"{number}.db")
    counts = " UNION ALL ".join(f"SELECT '{table}', count(*) FROM {{}}{table} WHERE run_id = {number}" for table in tables)
    ours = sorted(server.rows(counts.replace("{}", "export.")))
    assert ours == sorted(connection.execute(counts.replace("{}", ""))), (number, ours)
    for table, source in (("sample", "block_id"), ("port_sample", "port_id")):
        columns = f"SELECT invocation_id, coalesce({source}, 0), metric, i, coalesce(t, -1), coalesce(value, -1) FROM "
        ours = server.rows(f"{columns} export.{table} WHERE run_id = {number}")
        assert sorted(ours) == sorted(connection.execute(columns + table)), (number, table)


def check_exports(server, program, folder):
    """Exports are loaded once each, into the partition of their month."""
    folder.mkdir()
    exports = export_samples(program, folder)
    tables = [path.stem for path in exports[1].glob("*.csv")]
    assert len(tables) == 9 and len(exports) >= 10
    months = {"2026-11-30": [], "2026-12-01": []}
    for number, export in exports.items():
        months["2026-12-01" if number % 2 else "2026-11-30"].append(export)
    for _ in range(2):
        for date, folders in months.items():
            load(server, "load_exports.sh", date, *folders)
        for number in exports:
            check_run(server, folder, number, tables)
    for month, odd in (("11", 0), ("12", 1)):
        runs = server.rows(f"SELECT DISTINCT run_id FROM export.sample_2026_{month} ORDER BY run_id")
        assert runs == [(number,) for number in exports if number % 2 == odd], runs
    check_stall_query(server, exports)
    check_refused(server, program, folder, exports, tables)


def check_stall_query(server, exports):
    """The page's query of samples, asked the stalls of load_a and the cycles of vector_add, as its capture has them."""
    page = (TOP / "docs" / "fleet.md").read_text(encoding="utf-8")
    query = re.search(r"^How much of its time a block was stalled.*\n\n((?:    .*\n)+)", page, re.MULTILINE)[1]
    number = next(number for number, folder in exports.items() if "vector_add" in (folder / "run.csv").read_text(encoding="utf-8"))
    stall = 40 + 42 + 43 + 47 + 38 + 41 + 0
    cycles = 120 + 120 + 120 + 121 + 119 + 119 + 12
    assert server.rows(query) == [(number, "2026-11-30", 100 * stall / cycles)]


def check_refused(server, program, folder, exports, tables):
    """What can't be loaded leaves nothing, and doesn't keep others from being loaded."""
    names = [f"export.{table}" for table in tables]
    before = server.counts(names)
    # Another run with the number 1, and one that was cut off within its last table.
    report = TOP / "samples/vector_add/expected_report.json"
    subprocess.run([program, "-q", "export", report, "--to", "csv", "-o", folder / "other", "--run-id", "1"], check=True)
    for number in (100, 101):
        name = folder / str(number)
        subprocess.run([program, "-q", "export", report, "--to", "csv", "-o", name, "--run-id", str(number)], check=True)
    cut = folder / "100" / "sample.csv"
    cut.write_bytes(cut.read_bytes()[:-10])
    status, output = server.run(SCRIPTS / "load_exports.sh", "2027-01-31", folder / "other", folder / "100", exports[2])
    assert status == 1 and "another run has the number 1; export with another --run-id" in output, output
    assert f"{folder / '100'} was not loaded" in output, output
    assert server.counts(names) == before
    status, output = server.run(SCRIPTS / "load_exports.sh", "2027-02-30", folder / "101")
    assert status == 1 and "date/time field value out of range" in output, output
    status, output = server.run(SCRIPTS / "load_exports.sh", "2027-01-31", folder / "100", folder / "101")
    assert status == 1 and server.rows("SELECT DISTINCT run_id FROM export.sample_2027_01") == [(101,)], output
    assert server.run(SCRIPTS / "load_exports.sh", "January", folder / "101")[0] == 2


def check_months(server):
    """Partitions of months to come, across a year's end; those that are there stay."""
    server.rows("SELECT export.make_months('2027-11-30', 3)")
    server.rows("SELECT export.make_months('2027-12-31', 2)")
    made = server.rows("SELECT relname FROM pg_class WHERE relname ~ '^(port_)?sample_202[78]_..$' ORDER BY relname COLLATE \"C\"")
    months = ("2027_01", "2027_02", "2027_11", "2027_12", "2028_01")
    assert [name for name, in made if not name.startswith("port_")] == [f"sample_{month}" for month in months if month != "2027_02"], made
    assert len(made) == 2 * 4, made


def test_postgres(program, folder):
    folder.mkdir()
    with Server() as server:
        for _ in range(2):
            status, output = server.run("psql", "-X", "-q", "-f", str(SCRIPTS / "schema.sql"))
            assert status == 0 and "ERROR" not in output, output
        check_histories(server, program, folder / "histories")
        check_exports(server, program, folder / "exports")
        check_months(server)
    assert not server.folder.exists()
