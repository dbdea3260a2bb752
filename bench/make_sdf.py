#!/usr/bin/env python3
"""Writes a large HEC-RAS-like SDF file for timing the converter.

    make_sdf.py OUTPUT SIZE_MB [--seed N] [--points N]

The file has a stream network of several reaches and as many cross-sections
as it takes to reach SIZE_MB, each with a cut line, an NVALUES table, two
levee markers and a surface line of about --points points (default 400).
"""
import argparse
import math
import random


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("output")
    ap.add_argument("size_mb", type=float)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--points", type=int, default=400)
    a = ap.parse_args()
    rnd = random.Random(a.seed)
    target = int(a.size_mb * 1024 * 1024)

    out = open(a.output, "w", newline="")
    written = 0

    def w(s):
        nonlocal written
        out.write(s)
        out.write("\r\n")
        written += len(s) + 2

    w("# RAS export file (generated for timing)")
    w("BEGIN HEADER:")
    w("  UNITS: METRIC")
    w("END HEADER:")
    w("")
    w("BEGIN STREAM NETWORK:")
    reaches = []
    x, y = 300000.0, 6200000.0
    for r in range(8):
        pts = []
        for k in range(200):
            x += 25 + rnd.uniform(-5, 5)
            y -= 20 + rnd.uniform(-8, 8)
            pts.append((x, y))
        reaches.append((f"Reach {r + 1}", pts))
    for name, pts in reaches:
        w("   REACH:")
        w("      STREAM ID: Big River")
        w(f"      REACH ID: {name}")
        w("      CENTERLINE:")
        for px, py in pts:
            w(f"         {px:.3f}, {py:.3f}, ")
        w("   END:")
    w("END STREAM NETWORK:")
    w("")
    w("BEGIN CROSS-SECTIONS:")
    n = 0
    while written < target:
        name, pts = reaches[n % len(reaches)]
        cx, cy = pts[(n * 7) % len(pts)]
        ang = rnd.uniform(0, math.pi)
        half = rnd.uniform(60, 300)
        nx, ny = math.cos(ang), math.sin(ang)
        bed = 100.0 - 0.001 * n
        w("   CROSS-SECTION:")
        w("      STREAM ID:Big River")
        w(f"      REACH ID:{name}")
        w(f"      STATION:{100000 - n * 0.5:.2f}")
        w("      CUT LINE:")
        for t in (-half, 0.0, half):
            w(f"         {cx + nx * t:.4f}, {cy + ny * t:.4f}")
        w("      NVALUES:")
        w("         0, 0.06")
        w("         0.4, 0.035")
        w("         0.6, 0.06")
        w("      LEVEE POSITIONS:")
        w(f"         LB, {rnd.uniform(0.1, 0.3):.3f}, {bed + 5:.2f}")
        w(f"         RB, {rnd.uniform(0.7, 0.9):.3f}, {bed + 5.2:.2f}")
        w("      SURFACE LINE:")
        m = max(2, int(a.points * rnd.uniform(0.8, 1.2)))
        for i in range(m):
            t = -half + 2 * half * i / (m - 1)
            u = abs(t) / half
            z = bed + (0.5 + 6 * u * u) + rnd.uniform(-0.05, 0.05)
            w(f"         {cx + nx * t:.4f}, {cy + ny * t:.4f}, {z:.3f}")
        w("   END:")
        n += 1
    w("END CROSS-SECTIONS:")
    out.close()
    print(f"{a.output}: {written} bytes, {n} cross-sections")


if __name__ == "__main__":
    main()
