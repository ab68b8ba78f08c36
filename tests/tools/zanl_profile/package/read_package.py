# SPDX-License-Identifier: Apache-2.0
"""read_package.py FILE: prints each section of a package as a line with its name and its bytes in hexadecimal.

Reads the file by the layout of docs/package.md alone.
"""

import struct
import sys


def sections(data):
    """Pairs of a section's name and its bytes, without the table of names."""
    assert data[:7] == b"\x7fELF\x01\x01\x01", "no little-endian ELF file of the 32-bit class"
    header_offset, header_size, number, names_index = struct.unpack_from("<32xI10xHHH", data)

    def header(index):
        name, kind, _, _, offset, size = struct.unpack_from("<6I", data, header_offset + index * header_size)
        return name, kind, data[offset : offset + size]

    _, _, names = header(names_index)
    for index in range(1, number):
        name, kind, contents = header(index)
        text = names[name : names.index(b"\0", name)]
        if index != names_index and text:
            yield text, contents


for name, contents in sections(open(sys.argv[1], "rb").read()):
    print(name.decode(), contents.hex())
