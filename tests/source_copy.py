# SPDX-License-Identifier: Apache-2.0
"""Copies of the sources, for tests that build them elsewhere or change them."""

import shutil

NOT_COPIED = {".git", "build", "node_modules", "__pycache__"}


def update_copy(source, target):
    """Makes `target` the same as `source`. Files that are the same already keep their times; others get that of now, as a
    build would take an older one for known."""
    target.mkdir(parents=True, exist_ok=True)
    names = {path.name for path in source.iterdir()} - NOT_COPIED
    for path in target.iterdir():
        if path.name not in names:
            shutil.rmtree(path) if path.is_dir() and not path.is_symlink() else path.unlink()
    for name in names:
        if (source / name).is_dir():
            update_copy(source / name, target / name)
        elif not (target / name).is_file() or (source / name).read_bytes() != (target / name).read_bytes():
            shutil.copy(source / name, target / name)
