# SPDX-License-Identifier: Apache-2.0
"""examples/fleet by make and GNU parallel, on this machine: 40 pairs, three of them broken."""

import json
import os
import shutil
import subprocess

from fleet_pairs import BROKEN, GOOD, NUM_PAIRS, TOP, make_pairs, name_of, write_capture, write_noting_program

EXAMPLES = TOP / "examples" / "fleet"


class Fleet:
    """A folder with pairs, in which an engine works."""

    def __init__(self, program, folder, seconds=0.0):
        self.program = program
        self.folder = folder
        self.calls = folder / "calls.log"
        folder.mkdir(parents=True)
        make_pairs(program, folder / "pairs")
        write_noting_program(folder / "program", program, self.calls, seconds)
        self.environment = dict(os.environ, ZANL_PROFILE=str(folder / "program"), LC_ALL="C")

    def run(self, *command):
        """The exit status of a command in the folder, and all that it printed."""
        result = subprocess.run(
            command, cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, check=False,
        )
        return result.returncode, result.stdout

    def take_calls(self):
        """The names of the pairs that were run since the last call, sorted."""
        names = self.names_of_calls()
        self.calls.unlink(missing_ok=True)
        return names

    def names_of_calls(self):
        """The same, without taking them."""
        lines = self.calls.read_text(encoding="utf-8").splitlines() if self.calls.exists() else []
        return sorted(os.path.basename(line.split()[2]).removesuffix(".zanx") for line in lines)

    def check_results(self, numbers):
        """Each of these pairs has a report, a summary and one run in the history, and no other has any."""
        names = sorted(name_of(number) for number in numbers)
        results = self.folder / "results"
        for kind in ("summary", "report"):
            found = sorted(path.name.split(".")[0] for path in results.glob(f"*.{kind}.json"))
            assert found == names, (kind, found)
        assert not list(results.glob("*unfinished*"))
        listed = subprocess.run(
            [self.program, "history", "list", self.folder / "runs.db", "--json"], capture_output=True, check=True
        )
        runs = json.loads(listed.stdout)["runs"]
        assert len({run["id"] for run in runs}) == len(runs)
        assert sorted(os.path.basename(run["input"]).split(".")[0] for run in runs) == names, runs


def repair(fleet, number):
    write_capture(fleet.folder / "pairs" / f"{name_of(number)}.mon", number)
    if BROKEN[number] == "cut package":
        shutil.copy(fleet.folder / "pairs" / f"{name_of(GOOD[0])}.zanx", fleet.folder / "pairs" / f"{name_of(number)}.zanx")


def test_make(program, folder):
    """Make works on what is new or has changed, and goes on after failures."""
    fleet = Fleet(program, folder)
    work = ("make", "-k", "-j4", "-f", str(EXAMPLES / "Makefile"))
    add = ("make", "-f", str(EXAMPLES / "Makefile"), "history", "LABELS=--label rack=7")
    status, output = fleet.run(*work)
    assert status == 2, output
    # Pair 7 has no capture, so there is no rule for it; 19 and 31 fail in check.
    assert fleet.take_calls() == [name_of(number) for number in GOOD], output
    assert fleet.run(*add)[0] == 0
    fleet.check_results(GOOD)
    # Nothing is new. Then a broken pair is repaired, and a good one has changed.
    fleet.run(*work)
    assert fleet.take_calls() == []
    repair(fleet, 19)
    write_capture(fleet.folder / "pairs" / f"{name_of(2)}.mon", 2)
    fleet.run(*work)
    assert fleet.take_calls() == [name_of(2), name_of(19)]
    fleet.run(*add)
    fleet.check_results([*GOOD, 19])
    labelled = subprocess.run(
        [program, "history", "list", fleet.folder / "runs.db", "--where", "rack=7", "--json"], capture_output=True, check=True
    )
    assert len(json.loads(labelled.stdout)["runs"]) == len(GOOD) + 1


def test_parallel(program, folder):
    """Parallel works on what is new or has failed."""
    fleet = Fleet(program, folder)
    work = (str(EXAMPLES / "run_parallel.sh"), "pairs", "results", "runs.db", "-j4")
    status, output = fleet.run(*work)
    assert status == 1, output
    assert fleet.take_calls() == [name_of(number) for number in GOOD], output
    fleet.check_results(GOOD)
    assert len((fleet.folder / "results/joblog").read_text(encoding="utf-8").splitlines()) == NUM_PAIRS + 1
    # The broken ones are tried again, and fail in check.
    assert fleet.run(*work)[0] == 1
    assert fleet.take_calls() == []
    for number in BROKEN:
        repair(fleet, number)
    shutil.copy(fleet.folder / "pairs" / f"{name_of(1)}.zanx", fleet.folder / "pairs" / "pair00.zanx")
    write_capture(fleet.folder / "pairs" / "pair00.mon", 0)
    status, output = fleet.run(*work)
    assert status == 0, output
    assert fleet.take_calls() == ["pair00", *(name_of(number) for number in BROKEN)], output
    fleet.check_results(range(NUM_PAIRS + 1))
