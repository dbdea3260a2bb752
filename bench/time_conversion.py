#!/usr/bin/env python3
"""Times the converter against the compiled I/O floor, in pairs.

    time_conversion.py REACHMAP SDF_FILE [--format shp|mif] [--notrim] [--runs N]
                       [--workdir DIR] [--pin CPU] [--floor COPY_FLOOR] [--no-strace]

Each pair runs the converter in a fresh folder (the SDF file hard-linked or
copied in, with a Header.prj and a Header.mif beside it, standard input
closed), moves what it wrote to a reference folder, and then runs the
compiled floor (copy_floor, given with --floor or found in build/bench/bench):
it reads the input once and writes the same files again, and reports the
wall, user and system time of that part itself, without its untimed preload.

Reports, over N pairs: median, minimum and maximum of wall, user and system
time for both, the ratio of the two wall times and of the two user + system
times per pair (the second is the steadier on a loaded machine), and the
converter's peak resident memory. The converter is started by run_measured
(built beside copy_floor), which times the whole process from fork to exit
and reports its own peak memory: started straight from this interpreter, the
converter's peak would start from the interpreter's size. The floor's time
is its own timed part. When strace is installed, one more untimed run under
`strace -c -f` counts the converter's system calls per output file.

--pin CPU keeps both programs on one core. Give a --workdir on tmpfs
(/dev/shm): on ext4, creating thousands of files right after deleting
thousands (the previous run's) makes the kernel scan recently freed inodes,
a cost that falls on whichever command creates files first and has nothing
to do with either.
"""
import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

from headers import write_headers

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

INPUT = "input.sdf"
FLOOR_LINE = re.compile(r"timed wall ([0-9.]+) user ([0-9.]+) sys ([0-9.]+) s")


def prepare(workdir, sdf):
    d = tempfile.mkdtemp(prefix="conv-", dir=workdir)
    try:
        os.link(sdf, os.path.join(d, INPUT))
    except OSError:
        shutil.copyfile(sdf, os.path.join(d, INPUT))
    write_headers(d)
    return d


def pinned(cpu):
    return None if cpu is None else (lambda: os.sched_setaffinity(0, {cpu}))


MEASURED_LINE = re.compile(r"measured wall ([0-9.]+) user ([0-9.]+) sys ([0-9.]+) s peak ([0-9]+) kB status (-?[0-9]+)")


def convert(runner, reachmap, d, opts, cpu):
    """One timed run through run_measured, which forks the converter itself so
    that its peak memory is its own, not this interpreter's: wall, user, sys,
    peak RSS in MB, exit status, new files."""
    before = set(os.listdir(d))
    pin = [] if cpu is None else ["--cpu", str(cpu)]
    p = subprocess.run([runner] + pin + [reachmap] + opts + [INPUT], cwd=d, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    m = MEASURED_LINE.search(p.stderr)
    if not m:
        sys.exit(f"run_measured failed: {p.stderr.strip()}")
    wall, user, system, peak_kb, status = m.groups()
    outputs = sorted(f for f in os.listdir(d) if f not in before)
    return float(wall), float(user), float(system), int(peak_kb) / 1024.0, int(status), outputs


def floor(copy_floor, d, outputs, workdir, cpu):
    """Moves the converter's outputs to a reference folder and runs the floor
    on them: its own wall, user and sys for the timed part."""
    ref = tempfile.mkdtemp(prefix="ref-", dir=workdir)
    for f in outputs:
        os.rename(os.path.join(d, f), os.path.join(ref, f))
    dst = os.path.join(tempfile.mkdtemp(prefix="floor-", dir=workdir), "out")
    # --take: the floor deletes the reference files once loaded, so that what it
    # writes finds memory as the converter's run did (freed by the pair before).
    p = subprocess.run([copy_floor, "--take", os.path.join(d, INPUT), ref, dst], stdin=subprocess.DEVNULL,
                       capture_output=True, text=True, preexec_fn=pinned(cpu))
    m = FLOOR_LINE.search(p.stderr)
    if p.returncode != 0 or not m:
        sys.exit(f"copy_floor failed: {p.stderr.strip()}")
    shutil.rmtree(ref)
    shutil.rmtree(os.path.dirname(dst))
    return tuple(float(v) for v in m.groups())


def syscalls(reachmap, sdf, opts, workdir):
    """Per-syscall (calls, errors) of one untimed run under strace -c -f."""
    d = prepare(workdir, sdf)
    log = os.path.join(workdir or tempfile.gettempdir(), f"strace-{os.getpid()}.txt")
    with open(os.devnull, "rb") as null_in, open(os.devnull, "wb") as null_out:
        before = set(os.listdir(d))
        subprocess.run(["strace", "-c", "-f", "-o", log, reachmap] + opts + [INPUT], cwd=d,
                       stdin=null_in, stdout=null_out)
        files = len(set(os.listdir(d)) - before)
    counts = {}
    with open(log) as f:
        for line in f:
            cols = line.split()
            # % time, seconds, usecs/call, calls, [errors,] syscall
            if len(cols) >= 5 and cols[0][0].isdigit() and cols[-1] != "total":
                calls = int(cols[3])
                errors = int(cols[4]) if len(cols) == 6 else 0
                counts[cols[-1]] = (calls, errors)
    os.remove(log)
    shutil.rmtree(d)
    return counts, files


def find_built(given, name):
    for p in ([given] if given else [os.path.join(ROOT, "build", "bench", "bench", name)]):
        if os.access(p, os.X_OK):
            return os.path.abspath(p)
    sys.exit(f"{name} not found: build it with cmake --preset bench && cmake --build --preset bench"
             + (", or give --floor" if name == "copy_floor" else ""))


def spread(values, fmt="{:8.3f}"):
    return " ".join(fmt.format(v) for v in (statistics.median(values), min(values), max(values)))


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("reachmap")
    ap.add_argument("sdf")
    ap.add_argument("--format", choices=["shp", "mif"], default="shp")
    ap.add_argument("--notrim", action="store_true")
    ap.add_argument("--runs", type=int, default=5, help="pairs of runs (default 5)")
    ap.add_argument("--workdir", default=None, help="where the runs write (tmpfs recommended)")
    ap.add_argument("--pin", type=int, metavar="CPU", help="run both programs on this core only")
    ap.add_argument("--floor", help="the copy_floor program (default build/bench/bench/copy_floor)")
    ap.add_argument("--no-strace", action="store_true", help="skip the system call count")
    a = ap.parse_args()
    reachmap = os.path.abspath(a.reachmap)
    copy_floor = find_built(a.floor, "copy_floor")
    runner = find_built(None, "run_measured")
    opts = ["-" + a.format] + (["-notrim"] if a.notrim else [])
    conv, flo, rss = {"wall": [], "user": [], "sys": []}, {"wall": [], "user": [], "sys": []}, []
    ratios, cpu_ratios = [], []
    for _ in range(a.runs):
        d = prepare(a.workdir, a.sdf)
        wall, user, system, peak, status, outputs = convert(runner, reachmap, d, opts, a.pin)
        out_bytes = sum(os.path.getsize(os.path.join(d, f)) for f in outputs)
        fw, fu, fs = floor(copy_floor, d, outputs, a.workdir, a.pin)
        shutil.rmtree(d)
        for k, v in zip(("wall", "user", "sys"), (wall, user, system)):
            conv[k].append(v)
        for k, v in zip(("wall", "user", "sys"), (fw, fu, fs)):
            flo[k].append(v)
        ratios.append(wall / fw if fw > 0 else float("inf"))
        cpu_ratios.append((user + system) / (fu + fs) if fu + fs > 0 else float("inf"))
        rss.append(peak)
    mb = 1024.0 * 1024.0
    in_bytes = os.path.getsize(a.sdf)
    print(f"command          reachmap {' '.join(opts)} ({os.path.basename(a.sdf)})")
    print(f"input            {in_bytes / mb:10.1f} MB")
    print(f"output           {out_bytes / mb:10.1f} MB in {len(outputs)} files")
    print(f"exit status      {status}")
    print(f"pairs            {a.runs}, " + (f"both pinned to CPU {a.pin}" if a.pin is not None else "not pinned"))
    print(f"{'':17}{'median':>8} {'min':>8} {'max':>8}")
    for label, table in (("converter", conv), ("floor", flo)):
        for k in ("wall", "user", "sys"):
            print(f"{label + ' ' + k:17}{spread(table[k])} s")
    print(f"{'ratio wall':17}{spread(ratios, '{:8.2f}')} x (converter / floor, per pair)")
    # On a loaded machine the wall times wait for other work; user + system
    # time does much less.
    print(f"{'ratio cpu':17}{spread(cpu_ratios, '{:8.2f}')} x (user + system, per pair)")
    # On a virtual machine the floor's system time now and then jumps several
    # fold (fresh memory backed by the host on first touch), and the pair's
    # ratio with it; the fastest floor is the machine's real limit.
    print(f"{'ratio to fastest':17}{statistics.median(conv['wall']) / min(flo['wall']):8.2f} x "
          "(converter median wall / floor minimum wall)")
    print(f"{'peak RSS':17}{spread(rss, '{:8.1f}')} MB")
    print(f"{'input rate':17}{in_bytes / mb / statistics.median(conv['wall']):8.1f} MB/s")
    if a.no_strace or not shutil.which("strace"):
        print("syscalls         not counted" + ("" if a.no_strace else " (strace is not installed)"))
        return
    counts, files = syscalls(reachmap, a.sdf, opts, a.workdir)
    total = sum(c for c, _ in counts.values())
    errors = sum(e for _, e in counts.values())
    print(f"syscalls         {total} in all, {errors} failing, {total / max(files, 1):.2f} per output file "
          f"({files} files; one untimed run under strace -c -f)")
    for name, (c, e) in sorted(counts.items(), key=lambda kv: -kv[1][0])[:8]:
        print(f"  {name:15}{c:9} {c / max(files, 1):8.2f} per file" + (f", {e} failing" if e else ""))


if __name__ == "__main__":
    main()
