#!/usr/bin/env python3
"""Runs one golden case of the converter and compares every file it writes.

A case folder holds:
  args        the command line, one argument per line
  input/      the files the run starts with (the .sdf, Header files)
  input-from  optional: a project folder whose files are copied in as well
  expected/   what the run must leave: every file it wrote, byte for byte
              (.shp, .shx and .dbf as text dumps, <name>.txt), and
              _stdout.txt, the console transcript

With --update the expected folder is written anew from this run instead;
its diff is then the review of an intended change.
"""
import argparse
import difflib
import os
import shutil
import struct
import subprocess
import sys

BINARY = (".shp", ".shx", ".dbf")
TRANSCRIPT = "_stdout.txt"


def hexbytes(b):
    return b.hex(" ") if b else "-"


def extra(label, b):
    """Bytes that are normally zero, shown only when they are not."""
    return f", {label} {b.hex(' ')}" if any(b) else ""


def num(v):
    # repr is the shortest text that reads back as the same double.
    return repr(v)


def dump_shp(data, index):
    """Every field of a .shp or .shx file, one line each; any byte not
    covered by a field is shown in hex, so no change can hide."""
    out = []
    if len(data) < 100:
        return ["short file: " + hexbytes(data)]
    code, = struct.unpack(">i", data[0:4])
    words, = struct.unpack(">i", data[24:28])
    version, stype = struct.unpack("<ii", data[28:36])
    box = struct.unpack("<8d", data[36:100])
    out.append(f"file code {code}, length {words} words, version {version}, type {stype}" + extra("unused", data[4:24]))
    out.append("bounds " + " ".join(num(v) for v in box[:4]) + "  z/m " + " ".join(num(v) for v in box[4:]))
    pos = 100
    if index:
        while pos + 8 <= len(data):
            off, n = struct.unpack(">ii", data[pos:pos + 8])
            out.append(f"record at {off} words, {n} words")
            pos += 8
    else:
        while pos + 8 <= len(data):
            rec, n = struct.unpack(">ii", data[pos:pos + 8])
            body = data[pos + 8:pos + 8 + 2 * n]
            pos += 8 + 2 * n
            out.append(f"record {rec}, {n} words")
            out.extend("  " + line for line in dump_shape(body))
    if pos < len(data):
        out.append("trailing " + hexbytes(data[pos:]))
    return out


def dump_shape(body):
    if len(body) < 4:
        return ["short record " + hexbytes(body)]
    stype, = struct.unpack("<i", body[:4])
    if stype == 1 and len(body) == 20:
        return [f"point {num(struct.unpack('<d', body[4:12])[0])} {num(struct.unpack('<d', body[12:20])[0])}"]
    if stype in (3, 5) and len(body) >= 44:
        box = struct.unpack("<4d", body[4:36])
        nparts, npoints = struct.unpack("<ii", body[36:44])
        at = 44
        parts = struct.unpack(f"<{nparts}i", body[at:at + 4 * nparts])
        at += 4 * nparts
        out = [f"type {stype}, box " + " ".join(num(v) for v in box) + f", parts {list(parts)}, {npoints} points"]
        for _ in range(npoints):
            x, y = struct.unpack("<2d", body[at:at + 16])
            out.append(f"{num(x)} {num(y)}")
            at += 16
        if at < len(body):
            out.append("rest " + hexbytes(body[at:]))
        return out
    return [f"type {stype}: " + hexbytes(body[4:])]


def dump_dbf(data):
    out = []
    if len(data) < 32:
        return ["short file: " + hexbytes(data)]
    records, header, reclen = struct.unpack("<IHH", data[4:12])
    # Bytes 1-3 are the date the file was written: blanked.
    out.append(f"version {data[0]}, date blanked, {records} records, header {header} bytes, record {reclen} bytes"
               + extra("reserved", data[12:32]))
    pos = 32
    while pos + 32 <= len(data) and data[pos] != 0x0D:
        f = data[pos:pos + 32]
        name = f[:11].split(b"\0", 1)[0].decode("latin-1")
        out.append(f"field {name!r}, {chr(f[11])} {f[16]}.{f[17]}" + extra("name bytes", f[len(name):11])
                   + extra("other", f[12:16] + f[18:32]))
        pos += 32
    out.append(f"terminator {hexbytes(data[pos:pos + 1])}")
    pos += 1
    if pos < header:
        out.append("header rest " + hexbytes(data[pos:header]))
    pos = max(pos, header)
    while reclen > 0 and pos + reclen <= len(data):
        out.append(repr(data[pos:pos + reclen].decode("latin-1")))
        pos += reclen
    if pos < len(data):
        out.append("trailing " + hexbytes(data[pos:]))
    return out


def snapshot(folder, before):
    """What the run left in `folder`: name -> bytes, binaries as dumps."""
    files = {}
    for root, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(root, name)
            rel = os.path.relpath(path, folder)
            if rel in before or rel.startswith(".std"):
                continue
            with open(path, "rb") as fh:
                data = fh.read()
            ext = os.path.splitext(name)[1].lower()
            if ext in BINARY:
                lines = dump_dbf(data) if ext == ".dbf" else dump_shp(data, ext == ".shx")
                files[rel + ".txt"] = ("\n".join(lines) + "\n").encode("latin-1")
            else:
                files[rel] = data
    return files


def show_diff(name, want, got):
    a = want.decode("latin-1").splitlines(keepends=True)
    b = got.decode("latin-1").splitlines(keepends=True)
    diff = list(difflib.unified_diff(a, b, "expected/" + name, "actual/" + name, n=2))
    sys.stdout.write("".join(diff[:60]))
    if len(diff) > 60:
        print(f"... {len(diff) - 60} more diff lines")
    if not diff:
        print(f"{name}: same text, different line ends or bytes")


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--exe", required=True)
    ap.add_argument("--case", required=True)
    ap.add_argument("--work", required=True)
    ap.add_argument("--source", required=True, help="the project folder, for input-from")
    ap.add_argument("--update", action="store_true")
    a = ap.parse_args()

    shutil.rmtree(a.work, ignore_errors=True)
    os.makedirs(a.work)
    sources = []
    from_file = os.path.join(a.case, "input-from")
    if os.path.exists(from_file):
        with open(from_file) as fh:
            sources.append(os.path.join(a.source, fh.read().strip()))
    if os.path.isdir(os.path.join(a.case, "input")):
        sources.append(os.path.join(a.case, "input"))
    for src in sources:
        shutil.copytree(src, a.work, dirs_exist_ok=True)
    before = set()
    for root, _, names in os.walk(a.work):
        before.update(os.path.relpath(os.path.join(root, n), a.work) for n in names)

    with open(os.path.join(a.case, "args")) as fh:
        args = [line.rstrip("\n") for line in fh if line.strip()]
    run = subprocess.run([os.path.abspath(a.exe)] + args, cwd=a.work, stdin=subprocess.DEVNULL, capture_output=True, timeout=120)
    got = snapshot(a.work, before)
    got[TRANSCRIPT] = run.stdout
    problems = []
    if run.returncode != 0:
        problems.append(f"exit status {run.returncode}, want 0")
    if run.stderr:
        problems.append("standard error not empty: " + run.stderr.decode("latin-1")[:400])

    expected_dir = os.path.join(a.case, "expected")
    if a.update:
        if problems:
            print("\n".join(problems))
            return 1
        shutil.rmtree(expected_dir, ignore_errors=True)
        for name, data in got.items():
            path = os.path.join(expected_dir, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as fh:
                fh.write(data)
        print(f"updated {expected_dir}: {len(got)} files")
        return 0

    want = {}
    for root, _, names in os.walk(expected_dir):
        for name in names:
            path = os.path.join(root, name)
            with open(path, "rb") as fh:
                want[os.path.relpath(path, expected_dir)] = fh.read()
    if not want:
        problems.append(f"no expected files in {expected_dir}")
    for name in sorted(set(want) - set(got)):
        problems.append(f"not written: {name}")
    for name in sorted(set(got) - set(want)):
        problems.append(f"written but not expected: {name}")
    for name in sorted(set(want) & set(got)):
        if want[name] != got[name]:
            problems.append(f"differs: {name}")
            show_diff(name, want[name], got[name])
    if problems:
        print("\n".join(problems))
        print(f"{len(problems)} problems in {os.path.basename(a.case.rstrip('/'))}")
        return 1
    print(f"{len(got)} files as expected")
    return 0


if __name__ == "__main__":
    sys.exit(main())
