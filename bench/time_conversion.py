#!/usr/bin/env python3
"""Times one conversion and the I/O floor for the same bytes.

    time_conversion.py REACHMAP SDF_FILE [--format shp|mif] [--notrim] [--workdir DIR] [--runs N]

Runs the converter in a fresh folder (the SDF file hard-linked or copied in,
with a Header.prj / Header.mif beside it) with standard input closed, and
reports wall time, input and output MB/s and peak resident memory. Then it
times a plain buffered copy of the same bytes (reading the input once and
writing every output file again, 1 MiB at a time) as the I/O floor, and
prints the ratio. With --runs N each figure is the median of N runs.

Give a --workdir on tmpfs (/dev/shm) to compare with the floor: on ext4,
creating thousands of files right after deleting thousands (the previous
run's) makes the kernel scan recently freed inodes, a cost that falls on
whichever command creates files first and has nothing to do with either.
"""
import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
import time

from copy_floor import copy_floor

PRJ = ('PROJCS["GDA_1994_MGA_Zone_55",GEOGCS["GCS_GDA_1994",DATUM["D_GDA_1994",'
       'SPHEROID["GRS_1980",6378137.0,298.257222101]],PRIMEM["Greenwich",0.0],'
       'UNIT["Degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],'
       'PARAMETER["False_Easting",500000.0],PARAMETER["False_Northing",10000000.0],'
       'PARAMETER["Central_Meridian",147.0],PARAMETER["Scale_Factor",0.9996],'
       'PARAMETER["Latitude_Of_Origin",0.0],UNIT["Meter",1.0]]\r\n')
MIF = ('Version 300\r\nCharset "WindowsLatin1"\r\nDelimiter ","\r\n'
       'CoordSys Earth Projection 8, 116, "m", 147, 0, 0.9996, 500000, 10000000\r\n'
       'Columns 1\r\n  ID Integer\r\nData\r\n\r\n')


def prepare(workdir, sdf):
    d = tempfile.mkdtemp(prefix="conv-", dir=workdir)
    name = "input.sdf"
    try:
        os.link(sdf, os.path.join(d, name))
    except OSError:
        shutil.copyfile(sdf, os.path.join(d, name))
    with open(os.path.join(d, "Header.prj"), "w", newline="") as f:
        f.write(PRJ)
    with open(os.path.join(d, "Header.mif"), "w", newline="") as f:
        f.write(MIF)
    return d, name


def convert(reachmap, d, name, opts):
    before = set(os.listdir(d))
    t0 = time.perf_counter()
    with open(os.devnull, "rb") as null_in, open(os.devnull, "wb") as null_out:
        p = subprocess.Popen([reachmap] + opts + [name], cwd=d, stdin=null_in, stdout=null_out)
        _, status, usage = os.wait4(p.pid, 0)
    wall = time.perf_counter() - t0
    outputs = [f for f in os.listdir(d) if f not in before]
    out_bytes = sum(os.path.getsize(os.path.join(d, f)) for f in outputs)
    return wall, usage.ru_maxrss / 1024.0, outputs, out_bytes, status


def floor_copy(d, name, outputs, workdir):
    dst = tempfile.mkdtemp(prefix="floor-", dir=workdir)
    t0 = time.perf_counter()
    copy_floor(os.path.join(d, name), d, dst, outputs)
    t = time.perf_counter() - t0
    shutil.rmtree(dst)
    return t


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("reachmap")
    ap.add_argument("sdf")
    ap.add_argument("--format", choices=["shp", "mif"], default="shp")
    ap.add_argument("--notrim", action="store_true")
    ap.add_argument("--workdir", default=None)
    ap.add_argument("--runs", type=int, default=1)
    a = ap.parse_args()
    reachmap = os.path.abspath(a.reachmap)
    opts = ["-" + a.format] + (["-notrim"] if a.notrim else [])
    in_bytes = os.path.getsize(a.sdf)
    walls, rss, floors = [], [], []
    for _ in range(a.runs):
        d, name = prepare(a.workdir, a.sdf)
        wall, peak, outputs, out_bytes, status = convert(reachmap, d, name, opts)
        floors.append(floor_copy(d, name, outputs, a.workdir))
        walls.append(wall)
        rss.append(peak)
        shutil.rmtree(d)
    wall, peak, floor = statistics.median(walls), max(rss), statistics.median(floors)
    mb = 1024.0 * 1024.0
    print(f"input            {in_bytes / mb:10.1f} MB")
    print(f"output           {out_bytes / mb:10.1f} MB in {len(outputs)} files")
    print(f"exit status      {os.waitstatus_to_exitcode(status)}")
    print(f"wall time        {wall:10.3f} s   (median of {a.runs})")
    print(f"input rate       {in_bytes / mb / wall:10.1f} MB/s")
    print(f"output rate      {out_bytes / mb / wall:10.1f} MB/s")
    print(f"peak RSS         {peak:10.1f} MB")
    print(f"I/O floor        {floor:10.3f} s   (buffered copy of the same bytes)")
    print(f"ratio to floor   {wall / floor:10.2f} x")


if __name__ == "__main__":
    main()
