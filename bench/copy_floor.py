#!/usr/bin/env python3
"""The I/O floor of a conversion: read INPUT once and write a copy of every
file of REFERENCE_DIR into DEST_DIR, 1 MiB at a time, with plain buffered
reads and writes.

    copy_floor.py INPUT REFERENCE_DIR DEST_DIR
"""
import os
import sys


def copy_floor(src, ref, dst, names=None):
    """Reads src once and copies each file of `names` (all of ref) into dst."""
    os.makedirs(dst, exist_ok=True)
    buf = bytearray(1 << 20)
    view = memoryview(buf)
    with open(src, "rb", buffering=0) as f:
        while f.readinto(buf):
            pass
    for name in os.listdir(ref) if names is None else names:
        with open(os.path.join(ref, name), "rb", buffering=0) as a, \
                open(os.path.join(dst, name), "wb", buffering=0) as b:
            while True:
                n = a.readinto(buf)
                if not n:
                    break
                b.write(view[:n])


def main():
    copy_floor(*sys.argv[1:4])


if __name__ == "__main__":
    main()
