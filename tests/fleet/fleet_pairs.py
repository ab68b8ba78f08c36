# SPDX-License-Identifier: Apache-2.0
"""Pairs of a package and its capture for the tests of examples/fleet, and a stand-in that notes the program's calls."""

import pathlib
import shutil
import subprocess

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
SAMPLE = TOP / "samples" / "vector_add"
NUM_PAIRS = 40
# Each is broken in a way of its own: there is no capture, the package is cut, the capture is of another design.
BROKEN = {7: "no capture", 19: "cut package", 31: "other design"}
GOOD = [number for number in range(1, NUM_PAIRS + 1) if number not in BROKEN]

# The end of the last invocation of the sample, in the line of its last sample.
LAST_SAMPLE = ",8000,9050,"


def name_of(number):
    return f"pair{number:02}"


def write_capture(path, number):
    """A run that took longer by so many nanoseconds, so that no two have the same metrics."""
    text = (SAMPLE / "profile.mon").read_text(encoding="utf-8")
    assert text.count(LAST_SAMPLE) == 1
    path.write_text(text.replace(LAST_SAMPLE, f",8000,{9050 + number},"), encoding="utf-8")


def make_pairs(program, folder):
    """40 pairs, three of them broken."""
    folder.mkdir()
    package = folder / f"{name_of(1)}.zanx"
    subprocess.run([program, "package", "create", package, "--from", SAMPLE], check=True)
    for number in range(1, NUM_PAIRS + 1):
        if number > 1:
            shutil.copy(package, folder / f"{name_of(number)}.zanx")
        write_capture(folder / f"{name_of(number)}.mon", number)
    for number, fault in BROKEN.items():
        if fault == "no capture":
            (folder / f"{name_of(number)}.mon").unlink()
        elif fault == "cut package":
            path = folder / f"{name_of(number)}.zanx"
            path.write_bytes(path.read_bytes()[:200])
        else:
            shutil.copy(TOP / "samples/channel/profile.mon", folder / f"{name_of(number)}.mon")


def write_noting_program(path, program, log, seconds=0.0):
    """A program that notes each pair it is asked to run, and takes that long for it."""
    path.write_text(
        "#!/bin/bash\n"
        f'[[ " $* " != *" run "* ]] || {{ echo "$*" >>"{log}"; sleep {seconds}; }}\n'
        f'exec "{program}" "$@"\n',
        encoding="utf-8",
    )
    path.chmod(0o755)
