#!/usr/bin/env python3
"""Proves that two builds of the converter write the same bytes.

    compare_builds.py BIN_A BIN_B [--real DIR] [--keep DIR]

Converts a set of small generated SDF files with quirks (levee blocks of one,
two and more markers, an n table walked past points, a block lost behind the
n rows, a section without a surface line, runs that stop on a bad row, a bad
station or an early end of file, over-long ids, ids with quotes, CR LF and
LF line ends), the bundled examples/river.sdf and the real samples of DIR
(default ../shared/data/sdf from the project root; skipped with a message
when absent). Every file is converted with -mif, -shp and no format option,
each with and without -notrim, once per binary, each binary in its own
folder, with standard input closed. A few command lines without a file
(help, a missing file, a bad option) are run as well, river.sdf in a folder
named with a Windows separator (first without, then with its Header files
there), and a run that stops half way over the outputs of an earlier one.

Then it compares every file byte for byte (in a .dbf, bytes 1 to 3 hold the
date of writing and are blanked first), standard output, standard error
and the exit status. Prints "identical", or each difference; the exit
status is 0 when identical, 1 otherwise.
"""
import argparse
import os
import shutil
import subprocess
import sys
import tempfile

from headers import write_headers

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


OPTIONS = [f + t for f in (["-mif"], ["-shp"], []) for t in ([], ["-notrim"])]
# Command lines that name no readable file: the help text, a missing file
# with nobody to answer the prompt, and an option error.
COMMAND_LINES = {"help": [], "missing": ["-mif", "missing.sdf"], "badopt": ["-xyz", "a.sdf"]}


def network(reaches):
    rows = ["BEGIN STREAM NETWORK:", "   ENDPOINT: 0, 0, 0, 1", "   ENDPOINT: 100, 100, 0, 2"]
    for stream, reach, pts in reaches:
        rows += ["   REACH:", f"      STREAM ID: {stream}", f"      REACH ID: {reach}", "      CENTERLINE:"]
        rows += [f"         {x}, {y}, " for x, y in pts]
        rows += ["   END:"]
    return rows + ["END STREAM NETWORK:", ""]


def section(station, stream="Big Creek", reach="Upper", levees=None, nvalues=None, cut=True,
            surface=None, extra=None):
    """One CROSS-SECTION block; None leaves a block out, a list gives its rows."""
    rows = ["   CROSS-SECTION:", f"      STREAM ID:{stream}", f"      REACH ID:{reach}",
            f"      STATION:{station}", "      NODE NAME: ", "      BANK POSITIONS: 0.35, 0.65"]
    if cut:
        rows += ["      CUT LINE:", "         0.000, 0.000", "         25.000, 0.500", "         50.000, 1.000"]
    if nvalues is not None:
        rows += ["      NVALUES:"] + [f"         {r}" for r in nvalues]
    if extra:
        rows += extra
    if levees is not None:
        rows += ["      LEVEE POSITIONS:"] + [f"         {r}" for r in levees]
    if surface is None:
        surface = [f"{x:.3f}, {x / 50:.3f}, {5 + abs(x - 25) / 5:.3f}" for x in range(0, 51, 5)]
    if surface:
        rows += ["      SURFACE LINE:"] + [f"         {r}" for r in surface]
    return rows + ["   END:", ""]


def quirk_files():
    """name -> (text, line end). Each stop comes after some good sections so
    that a partly written run is compared too."""
    net = network([("Big Creek", "Upper", [(0, 0), (50, 50), (100, 100)]),
                   ("Big Creek", "Lower", [(100, 100), (150, 120), (200, 130)])])
    head = ["# generated file with quirks", "BEGIN HEADER:", "  UNITS: METRIC", "END HEADER:", ""] + net
    xs = ["BEGIN CROSS-SECTIONS:", ""]
    good = section("900.0", levees=["LB, 0.2, 8.1", "RB, 0.8, 8.3"], nvalues=["0, 0.06", "0.35, 0.035", "0.65, 0.06"])
    quirks = (
        xs + good
        # One marker, then three (no pair on one side), then four; a marker without a height.
        + section("800.0", levees=["LB, 0.3, 7.5"])
        + section("700.0", levees=["a, 0.1, 9", "b, 0.2, 9", "c, 0.3, 9"])
        + section("600.0", levees=["a, 0.1, 9", "b, 0.3, 9", "c, 0.7, 9", "d, 0.9, 9"])
        + section("550.0", levees=['"Left levee", 0.18, ', '"Right levee", 0.84, 105.63'])
        # n rows between points: one reached a point late.
        + section("500.0", nvalues=["0, 0.01", "0.41, 0.02", "0.5, 0.03", "0.93, 0.04"])
        # The CUT LINE standing right behind the n rows is lost.
        + section("450.0", cut=False, nvalues=["0, 0.02", "0.5, 0.03"],
                  extra=["      CUT LINE:", "         1, 2", "         3, 4"])
        # A cut line and no surface line; an empty levee block; two markers leaving one point.
        + section("400.0", surface=[], extra=["      REACH LENGTHS: 150, 150, 150"])
        + section("350.0", levees=[])
        + section("300.0", levees=["L, 0.49, 6", "R, 0.51, 6"])
        # Ids with quotes, blank ids, ids too long for the attribute record
        # (no surface line, so no .csv is named after them), then a line cut
        # at its length limit whose .csv name is too long to open: the run
        # stops there.
        + section("250.0", stream='O"Brien Creek', reach="Reach 'A'")
        + section("200.0", stream="", reach="")
        + section("150.0", stream="S" * 600, reach="R" * 500, surface=[],
                  extra=["      REACH LENGTHS: 150, 150, 150"])
        + section("100.5", stream="x" * 1100, reach="Lower")
        + ["END CROSS-SECTIONS:"])
    stop_row = xs + good + section("100", surface=["1, 2"]) + good
    stop_station = xs + good + section("abc") + good
    stop_eof = xs + good + ["   CROSS-SECTION:", "      STREAM ID:S", "      REACH ID:R", "      STATION:5",
                            "      CUT LINE:", "         1, 2"]
    stop_levee = xs + good + section("100", levees=["L 0.5"])
    stop_net = ["title", "BEGIN STREAM NETWORK:", "   REACH:", "      STREAM ID: S", "      REACH ID: R",
                "      CENTERLINE:", "         1, abc", "   END:"]
    files = {}
    for name, rows, eol in (("quirks_crlf", head + quirks, "\r\n"), ("quirks_lf", head + quirks, "\n"),
                            ("stop_row", head + stop_row, "\r\n"), ("stop_station", head + stop_station, "\n"),
                            ("stop_eof", head + stop_eof, "\r\n"), ("stop_levee", head + stop_levee, "\r\n"),
                            ("stop_network", stop_net, "\n"), ("empty", [], "\r\n")):
        files[name + ".sdf"] = (eol.join(rows) + (eol if rows else "")).encode("latin-1")
    return files


def inputs(real_dir):
    files = quirk_files()
    with open(os.path.join(ROOT, "examples", "river.sdf"), "rb") as f:
        files["river.sdf"] = f.read()
    if real_dir and os.path.isdir(real_dir):
        for name in sorted(os.listdir(real_dir)):
            if name.lower().endswith(".sdf"):
                with open(os.path.join(real_dir, name), "rb") as f:
                    files["real_" + name] = f.read()
    else:
        print(f"real samples: {real_dir} is absent, skipped")
    return files


def run_one(binary, folder, args, sdf_name=None, data=None, tag=""):
    """One run in folder (made when new, with the Header files), the SDF
    file written first when given; the transcript, standard error and exit
    status are kept beside the outputs as #stdout{tag} and so on, names that
    no output of the converter can clash with."""
    if not os.path.isdir(folder):
        os.makedirs(folder)
        write_headers(folder)
    if sdf_name:
        path = os.path.join(folder, *sdf_name.split("\\"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as f:
            f.write(data)
    try:
        p = subprocess.run([binary] + args, cwd=folder, stdin=subprocess.DEVNULL,
                           capture_output=True, timeout=120)
        out, err, status = p.stdout, p.stderr, str(p.returncode)
    except subprocess.TimeoutExpired as e:
        out, err, status = e.stdout or b"", e.stderr or b"", "timeout"
    for name, b in (("#stdout", out), ("#stderr", err), ("#status", status.encode())):
        with open(os.path.join(folder, name + tag), "wb") as f:
            f.write(b)


def run_all(binary, top, files):
    runs = []
    for sdf_name, data in files.items():
        for opts in OPTIONS:
            run = sdf_name[:-4] + "".join("_" + o.lstrip("-") for o in opts)
            run_one(binary, os.path.join(top, run), opts + [sdf_name], sdf_name, data)
            runs.append(run)
    for run, args in COMMAND_LINES.items():
        run_one(binary, os.path.join(top, "cmd_" + run), args)
        runs.append("cmd_" + run)
    for fmt in (["-mif"], ["-shp"], []):
        tail = "".join("_" + o.lstrip("-") for o in fmt)
        # The file in a folder, named with a Windows separator: the layers go
        # beside it, the .csv files to the current folder.
        run = "in_folder" + tail
        run_one(binary, os.path.join(top, run), fmt + ["data\\river.sdf"], "data\\river.sdf", files["river.sdf"])
        write_headers(os.path.join(top, run, "data"))
        run_one(binary, os.path.join(top, run), fmt + ["data\\river.sdf"], tag="2")
        # A run over the outputs of an earlier, larger one that stops half
        # way: what the stop leaves of the old files counts too.
        run = "rerun" + tail
        run_one(binary, os.path.join(top, run), fmt + ["-notrim", "a.sdf"], "a.sdf", files["quirks_crlf.sdf"])
        run_one(binary, os.path.join(top, run), fmt + ["a.sdf"], "a.sdf", files["stop_station.sdf"], tag="2")
        runs += ["in_folder" + tail, run]
    return runs


def comparable(path):
    with open(path, "rb") as f:
        b = bytearray(f.read())
    if path.lower().endswith(".dbf") and len(b) >= 4:
        b[1:4] = b"\0\0\0"
    return bytes(b)


def describe(a, b):
    """Where two texts or binaries first differ, with that line of each."""
    n = min(len(a), len(b))
    at = next((i for i in range(n) if a[i] != b[i]), n)
    line = a[:at].count(b"\n")
    la, lb = a.split(b"\n"), b.split(b"\n")
    return (f"first difference at byte {at} (line {line + 1}), sizes {len(a)} and {len(b)}\n"
            f"      A: {la[line][:200] if line < len(la) else b''!r}\n"
            f"      B: {lb[line][:200] if line < len(lb) else b''!r}")


def files_under(folder):
    """Every file below folder, by its path relative to folder."""
    return {os.path.relpath(os.path.join(d, f), folder) for d, _, fs in os.walk(folder) for f in fs}


def compare(top_a, top_b, runs):
    diffs = []
    for run in runs:
        da, db = os.path.join(top_a, run), os.path.join(top_b, run)
        na, nb = files_under(da), files_under(db)
        for name in sorted(na - nb):
            diffs.append(f"{run}: {name} written only by A")
        for name in sorted(nb - na):
            diffs.append(f"{run}: {name} written only by B")
        for name in sorted(na & nb):
            a, b = comparable(os.path.join(da, name)), comparable(os.path.join(db, name))
            if a != b:
                diffs.append(f"{run}: {name}: {describe(a, b)}")
    return diffs


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("bin_a")
    ap.add_argument("bin_b")
    ap.add_argument("--real", default=os.path.join(ROOT, "..", "shared", "data", "sdf"),
                    help="folder of real SDF samples (default: ../shared/data/sdf)")
    ap.add_argument("--keep", help="leave both output folders under this folder instead of deleting them")
    a = ap.parse_args()
    bins = [os.path.abspath(a.bin_a), os.path.abspath(a.bin_b)]
    for b in bins:
        if not os.access(b, os.X_OK):
            sys.exit(f"not an executable: {b}")
    files = inputs(a.real)
    top = a.keep or tempfile.mkdtemp(prefix="compare-builds-")
    tops = [os.path.join(top, "A"), os.path.join(top, "B")]
    for t in tops:
        if os.path.exists(t):
            shutil.rmtree(t)
    try:
        runs = [run_all(b, t, files) for b, t in zip(bins, tops)][0]
        diffs = compare(tops[0], tops[1], runs)
    finally:
        if not a.keep:
            shutil.rmtree(top)
    print(f"{len(files)} input files, {len(runs)} runs per binary")
    for d in diffs:
        print(d)
    print("identical" if not diffs else f"{len(diffs)} differences")
    return 1 if diffs else 0


if __name__ == "__main__":
    sys.exit(main())
