#!/usr/bin/env python3
"""Checks that includes point one way: each library includes only itself and
the libraries below it (text <- runtime <- geometry <- gis <- driver, with the
programs beside the converter above), and no two files of a library include
each other, directly or round about. A file and its header count as one unit.

Usage: check_includes.py PROJECT_DIR; prints each breach and exits 1 on any.
"""
import os
import re
import sys

LEVELS = ["text", "runtime", "geometry", "gis", "driver", "tidy"]
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)


def units(top):
    """Each library's units: folder-relative stem -> the files of that stem."""
    found = {}
    for lib in LEVELS:
        for root, _, names in os.walk(os.path.join(top, lib)):
            for name in names:
                stem, ext = os.path.splitext(name)
                if ext not in (".cpp", ".hpp", ".h"):
                    continue
                path = os.path.join(root, name)
                key = os.path.relpath(os.path.join(root, stem), top)
                found.setdefault(key, []).append(path)
    return found


def cycle_from(graph, start):
    """A path that leads from `start` back to it, or None."""
    stack, seen = [(start, [start])], set()
    while stack:
        node, path = stack.pop()
        for nxt in graph.get(node, ()):
            if nxt == start:
                return path + [start]
            if nxt not in seen:
                seen.add(nxt)
                stack.append((nxt, path + [nxt]))
    return None


def main():
    top = sys.argv[1]
    problems = []
    graph = {}
    all_units = units(top)
    for key, files in all_units.items():
        lib = key.split(os.sep)[0]
        for path in files:
            with open(path, encoding="latin-1") as fh:
                text = fh.read()
            for inc in INCLUDE.findall(text):
                target_lib = inc.split("/")[0]
                if target_lib not in LEVELS:
                    continue
                if LEVELS.index(target_lib) > LEVELS.index(lib):
                    problems.append(f"{os.path.relpath(path, top)}: includes {inc}, a library above {lib}")
                target = os.path.splitext(inc)[0]
                if target != key and target.split("/")[0] == lib:
                    graph.setdefault(key, set()).add(target)
    reported = set()
    for key in sorted(graph):
        loop = cycle_from(graph, key)
        if loop and frozenset(loop) not in reported:
            reported.add(frozenset(loop))
            problems.append("include circle: " + " -> ".join(loop))
    for p in problems:
        print(p)
    print(f"{len(all_units)} units checked, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
