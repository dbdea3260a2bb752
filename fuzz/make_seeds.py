#!/usr/bin/env python3
"""Makes the seed corpora of the fuzz targets.

    make_seeds.py REACHMAP OUTDIR

REACHMAP is a built converter. OUTDIR gets one folder per target: the SDF
targets get the bundled example, its sections one by one, small files of
bench/make_sdf.py and a few hostile variants; the reader targets get the
layers that the converter writes from them (a .shp or .mif with its .dbf or
.mid behind a 4-byte length); the number target gets the number lines.
"""
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def sdf_seeds():
    example = (ROOT / "examples" / "river.sdf").read_bytes()
    seeds = {"example": example}
    # The network alone, and the network with each section alone.
    head, _, rest = example.partition(b"BEGIN CROSS-SECTIONS:")
    sections = re.findall(rb"CROSS-SECTION:.*?\n\s*END:[^\n]*\n", rest, re.S)
    for i, s in enumerate(sections):
        seeds[f"section{i}"] = head + b"BEGIN CROSS-SECTIONS:\r\n" + s + b"END CROSS-SECTIONS:\r\n"
    # Hostile variants: ids that overrun the record line, one ending in a
    # quote, no line ends, a blank id line, huge coordinates, a levee at 1e30.
    seeds["long_ids"] = example.replace(b"STREAM ID: Avon Creek", b"STREAM ID: " + b"S" * 600, 1).replace(
        b"REACH ID: Upper", b"REACH ID: " + b"R" * 600, 1)
    seeds["quote_id"] = example.replace(b"REACH ID: Upper", b'REACH ID: Up"', 1)
    seeds["lf_only"] = example.replace(b"\r\n", b"\n")
    seeds["huge"] = re.sub(rb"35\d{4}\.\d+", b"1.5e308", example, count=40)
    seeds["levee_1e30"] = example.replace(b"LB, 0.15", b"LB, 1e30", 1)
    with tempfile.TemporaryDirectory() as d:
        for n, (size, points) in enumerate([(0.07, 3), (0.08, 10)]):
            f = pathlib.Path(d) / f"g{n}.sdf"
            subprocess.run([sys.executable, str(ROOT / "bench" / "make_sdf.py"), str(f), str(size),
                            "--seed", str(n + 1), "--points", str(points)], check=True)
            seeds[f"generated{n}"] = f.read_bytes()
    return seeds


def layers(reachmap, sdf_seeds):
    """The layers the converter writes from the seeds, both formats."""
    shp, dbf, mif = {}, {}, {}
    with tempfile.TemporaryDirectory() as d:
        for name in ("example", "long_ids", "generated0"):
            for fmt in ("-shp", "-mif"):
                w = pathlib.Path(d) / (name + fmt)
                w.mkdir()
                for h in ("Header.mif", "Header.prj"):
                    shutil.copy(ROOT / "examples" / h, w / h)
                (w / "f.sdf").write_bytes(sdf_seeds[name])
                subprocess.run([str(reachmap), fmt, "f.sdf"], cwd=w, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, check=True)
                for p in sorted(w.glob("*.shp")):
                    body = p.read_bytes()
                    attrs = p.with_suffix(".dbf").read_bytes()
                    shp[f"{name}_{p.stem}"] = struct.pack("<I", len(body)) + body + attrs
                    dbf[f"{name}_{p.stem}"] = attrs
                for p in sorted(w.glob("*.mif")):
                    if p.name.startswith("Header"):
                        continue
                    body = p.read_bytes()
                    mif[f"{name}_{p.stem}"] = struct.pack("<I", len(body)) + body + p.with_suffix(".mid").read_bytes()
    return shp, dbf, mif


def number_seeds(sdf):
    lines = [l for l in sdf["example"].splitlines() if re.match(rb"\s*[-0-9.]", l)]
    seeds = {f"lines{i}": b"\n".join(lines[i:i + 8]) for i in range(0, len(lines), 40)}
    seeds["forms"] = b"1.5+3 2d-2 -7Q1 +.5 5. 1e 1e+ 0x10 inf nan 1e400 1e-400 4.9e-324 " \
                     b"9223372036854775807 -9223372036854775808 9223372036854775808 3*2.5 2* 'a b' /"
    return seeds


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    reachmap, out = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    sdf = sdf_seeds()
    shp, dbf, mif = layers(reachmap, sdf)
    for target, seeds in (("sdf", sdf), ("shp", shp), ("dbf", dbf), ("mif", mif), ("numbers", number_seeds(sdf))):
        folder = out / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, data in seeds.items():
            (folder / name).write_bytes(data)
        print(f"{folder}: {len(seeds)} seeds")


if __name__ == "__main__":
    main()
