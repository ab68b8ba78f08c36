#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs examples/fleet on real engines: make, GNU parallel, and PostgreSQL and Slurm with their daemons in temporary folders.

usage: run_tests.py PROGRAM [NAME...]      PROGRAM is a built zanl-profile; NAME is queries, postgres, make, parallel or slurm

Prints how many tests passed. A line "not run: ..." names what can't be tested here, and why. The exit status is 1 if a test
failed. All processes that it has started are ended, also then.
"""

import pathlib
import shutil
import signal
import sys
import tempfile
import traceback

import daemons
import history_queries
import local_engines
import postgres_server
import slurm_engine

LIMIT_SECONDS = 900  # far more than it takes: a test that hangs shall end


def missing(*programs):
    """Why a test can't run: what is missing, or nothing."""
    return ", ".join(f"{program} is missing" for program in programs if not shutil.which(program))


# name: test, and why it can't run here
TESTS = {
    "queries": (history_queries.test_queries, lambda: ""),
    "postgres": (postgres_server.test_postgres, lambda: missing("sqlite3", "psql") or postgres_server.why_not()),
    "make": (local_engines.test_make, lambda: missing("make")),
    "parallel": (local_engines.test_parallel, lambda: missing("parallel")),
    "slurm": (slurm_engine.test_slurm, lambda: missing(*slurm_engine.PROGRAMS) or slurm_engine.why_not()),
}


def run_test(name, program, folder):
    """True if it passed, False if it failed, None if it can't be run."""
    test, why_not = TESTS[name]
    reason = why_not()
    if not reason:
        try:
            test(program, folder / name)
            return True
        except daemons.NotStarted as fault:
            reason = str(fault)
        except Exception:  # pylint: disable=broad-except
            print(f"{name}: failed", file=sys.stderr)
            traceback.print_exc()
            return False
    print(f"not run: {name} ({reason})")
    return None


def stop(number, _):
    # The blocks that end processes run on their way out.
    raise SystemExit(f"stopped by {signal.Signals(number).name}")


def main():
    if len(sys.argv) < 2 or any(name not in TESTS for name in sys.argv[2:]):
        print(__doc__, file=sys.stderr)
        return 2
    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGALRM):
        signal.signal(number, stop)
    signal.alarm(LIMIT_SECONDS)
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory(prefix="zanl-fleet-") as folder:
        results = [run_test(name, program, pathlib.Path(folder)) for name in sys.argv[2:] or TESTS]
    print(f"{results.count(True)} tests passed")
    return 1 if False in results else 0


if __name__ == "__main__":
    sys.exit(main())
