#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the archive of the sources, and the one of the portable programs.

The same commit makes the same bytes, wherever and whenever it is built: names are sorted, times are that of the commit, and
owners and permissions are always the same.
"""

import argparse
import gzip
import io
import os
import pathlib
import shutil
import subprocess
import tarfile
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent
# Parts of these libraries are in the portable programs, which come with what their licences say.
LIBRARIES = ["libboost-dev", "libc6-dev", "libcli11-dev", "libelf-dev", "libfmt-dev", "libstdc++-{gcc}-dev", "libsqlite3-dev",
             "libtinyxml2-dev", "libutf8proc-dev", "libxxhash-dev", "rapidjson-dev", "zlib1g-dev"]


def output_of(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, cwd=TOP).stdout


def write_archive(path, top, files, epoch):
    """Packs `files`, which map names to (bytes, whether they may be executed), below the folder `top`."""
    with path.open("wb") as file, gzip.GzipFile("", "wb", 9, file, epoch) as packed, \
            tarfile.open(fileobj=packed, mode="w", format=tarfile.USTAR_FORMAT) as archive:
        for name in sorted(files):
            content, is_executable = files[name]
            entry = tarfile.TarInfo(f"{top}/{name}")
            entry.size, entry.mtime, entry.mode = len(content), epoch, 0o755 if is_executable else 0o644
            archive.addfile(entry, io.BytesIO(content))


def content_of(path):
    return path.read_bytes(), os.access(path, os.X_OK)


def source_files():
    """What git knows, with the commit that it is: a build of the archive has the version of a build of the clone."""
    names = [name for name in output_of("git", "ls-files", "-z").split("\0") if name and (TOP / name).is_file()]
    files = {name: content_of(TOP / name) for name in names}
    commit = output_of("git", "rev-parse", "HEAD")
    files["cmake/commit.txt"] = (commit.encode(), False)
    return files


def portable_files(build):
    """What is installed, without the library for other projects, and with programs that need no library."""
    files = {}
    with tempfile.TemporaryDirectory() as folder:
        prefix = pathlib.Path(folder)
        subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
        for program in (build / "portable").iterdir():
            subprocess.run(["strip", "--remove-section=.comment", "-o", prefix / "bin" / program.name, program], check=True)
        for path in prefix.rglob("*"):
            name = path.relative_to(prefix).as_posix()
            if path.is_file() and not name.startswith(("lib/", "include/")):
                files[name] = content_of(path)
    gcc = output_of("c++", "-dumpversion").split(".")[0].strip()
    for library in LIBRARIES:
        package = library.format(gcc=gcc)
        files[f"share/doc/zanl-profile/libraries/{package}"] = (pathlib.Path("/usr/share/doc", package, "copyright").read_bytes(), False)
    return files


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a build with ZAN_DIST")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="folder for the archives; it is emptied")
    parser.add_argument("--version", required=True)
    parser.add_argument("--epoch", type=int, required=True, help="the time of all files")
    parser.add_argument("--machine", required=True)
    arguments = parser.parse_args()
    shutil.rmtree(arguments.output, ignore_errors=True)
    arguments.output.mkdir(parents=True)
    name = f"zanl-profile-{arguments.version}"
    write_archive(arguments.output / f"{name}.tar.gz", name, source_files(), arguments.epoch)
    name += f"-{arguments.machine}"
    write_archive(arguments.output / f"{name}.tar.gz", name, portable_files(arguments.build), arguments.epoch)


if __name__ == "__main__":
    main()
