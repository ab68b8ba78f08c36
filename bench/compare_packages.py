#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`zanl-profile package` against the usual tools.

Sections: extracts and adds N MiB in 1,000 sections, and creates a package of 65,000 small ones, against objcopy. Trees:
packs and unpacks N MiB in 1,000 files of words, against tar with gzip -9, and unpacks 10,000 small files, against bsdtar. In each round ours and theirs run one after the other; what is printed is the median of
each, the ratio of the medians, and the peak memory of the largest process.
"""

import argparse
import pathlib
import random
import shlex
import shutil
import statistics
import subprocess
import tempfile

FILES = 1000
SMALL_FILES = 10000
SMALL_SECTIONS = 65000


def measured(measure, command, folder):
    """Seconds, and the peak memory in MiB of the largest process."""
    shell_command = command if isinstance(command, str) else shlex.join(command)
    run = subprocess.run([measure, "/bin/sh", "-c", shell_command], cwd=folder, text=True, stdout=subprocess.PIPE)
    if run.returncode != 0:
        raise SystemExit(f"failed: {shell_command[:80]}")
    wall, _, kibibytes = run.stdout.split()
    return float(wall), float(kibibytes) / 1024


def write_noise(folder, size):
    """Files no two of which are the same."""
    folder.mkdir()
    block = random.Random(1).randbytes(size)
    for i in range(FILES):
        (folder / f"f{i}").write_bytes(i.to_bytes(8, "little") + block[8:])


def write_words(folder, size):
    """Files that compress as text does."""
    chance = random.Random(2)
    words = [f"w{chance.getrandbits(24):x}" for _ in range(5000)]
    for i in range(FILES):
        path = folder / f"d{i // 50}" / f"f{i}"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(" ".join(chance.choices(words, k=size // 7))[:size])


def write_small_files(folder):
    for i in range(SMALL_FILES):
        path = folder / f"d{i // 100}" / f"f{i}"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"file {i}\n")


def compare(name, setting, ours, theirs, prepare):
    """Prints a row; `prepare` runs before each command, untimed."""
    measure, rounds, folder = setting
    results = {True: [], False: []}
    for _ in range(rounds):
        for is_ours, command in ((True, ours), (False, theirs)):
            prepare()
            results[is_ours].append(measured(measure, command, folder))
    ours_s, theirs_s = (statistics.median(s for s, _ in results[who]) for who in (True, False))
    ours_m, theirs_m = (statistics.median(m for _, m in results[who]) for who in (True, False))
    print(f"| {name} | {ours_s:.2f} s | {theirs_s:.2f} s | {ours_s / theirs_s:.2f} "
          f"| {ours_m:.0f} MiB | {theirs_m:.0f} MiB |", flush=True)


def compare_many_small(setting, toolbox, fresh):
    """What costs something for each section or file, however small it is."""
    folder = setting[2]
    names = [f"s{i}" for i in range(SMALL_SECTIONS)]
    (folder / "ours").write_text(" ".join(["package create work", *(f"{name}=empty" for name in names)]))
    (folder / "theirs").write_text("\n".join(f"--add-section={name}=empty" for name in names))
    compare(f"create {SMALL_SECTIONS:,} sections; objcopy", setting, f"xargs -s 1500000 {toolbox} <ours",
            ["objcopy", "@theirs", "base", "work"], fresh)
    write_small_files(folder / "small")
    subprocess.run([toolbox, "package", "pack", "small.stream", "small"], cwd=folder, check=True)
    subprocess.run("bsdtar czf small.tgz small", cwd=folder, shell=True, check=True)
    compare(f"unpack {SMALL_FILES:,} small files; bsdtar", setting,
            [toolbox, "package", "unpack", "small.stream", "-o", "to"], "mkdir to && bsdtar xzf small.tgz -C to", fresh)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help="folder of the programs")
    parser.add_argument("--mib", type=int, default=1000, help="size of all sections, or files, together")
    parser.add_argument("--rounds", type=int, default=3)
    arguments = parser.parse_args()
    build, rounds = arguments.build.resolve(), arguments.rounds
    toolbox = str(build / "tools" / "zanl_profile" / "zanl-profile")
    size = arguments.mib * (1 << 20) // FILES
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        setting = (build / "bench" / "measure", rounds, folder)
        write_noise(folder / "in", size)
        write_words(folder / "tree", size)
        (folder / "empty").write_bytes(b"")
        subprocess.run([toolbox, "package", "create", "base", "s=empty"], cwd=folder, check=True)
        sections = [f"s{i}=in/f{i}" for i in range(FILES)]
        subprocess.run([toolbox, "package", "create", "full", *sections], cwd=folder, check=True)

        def fresh():
            for entry in ("out", "work", "to"):
                path = folder / entry
                shutil.rmtree(path) if path.is_dir() else path.unlink(missing_ok=True)
            (folder / "out").mkdir()

        def fresh_base():
            fresh()
            shutil.copy(folder / "base", folder / "work")

        def fresh_full():
            fresh()
            shutil.copy(folder / "full", folder / "work")

        print(f"{arguments.mib} MiB in {FILES} sections or files, {rounds} rounds\n")
        print("| | ours | theirs | ratio | ours | theirs |\n|---|---|---|---|---|---|", flush=True)
        compare("extract all sections; objcopy", setting,
                [toolbox, "package", "extract", "full", "-o", "out"],
                ["objcopy", *(f"--dump-section=s{i}=out/s{i}" for i in range(FILES)), "full", "work"], fresh)
        compare("add all sections; objcopy", setting,
                [toolbox, "package", "add", "work", *sections],
                ["objcopy", *(f"--add-section={section}" for section in sections), "work"], fresh_base)
        compare("add one more section; objcopy", setting,
                [toolbox, "package", "add", "work", "one=in/f0"],
                ["objcopy", "--add-section=one=in/f0", "work"], fresh_full)
        compare("pack a tree; tar, gzip -9", setting,
                [toolbox, "package", "pack", "work", "tree"], "tar c tree | gzip -9 >work", fresh)
        subprocess.run([toolbox, "package", "pack", "stream", "tree"], cwd=folder, check=True)
        subprocess.run("tar c tree | gzip -9 >tgz", cwd=folder, shell=True, check=True)
        compare("unpack a tree; gzip, tar", setting,
                [toolbox, "package", "unpack", "stream", "-o", "to"],
                "mkdir to && gzip -dc tgz | tar x -C to", fresh)
        compare_many_small(setting, toolbox, fresh)


if __name__ == "__main__":
    main()
