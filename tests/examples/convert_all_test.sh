#!/usr/bin/env bash
# examples/convert_all.sh on a folder of two good files (one with a blank in
# its name, one in a subfolder without its own projection file) and one that
# stops on an error: each converted in its own .out folder, and a summary that
# counts two and names the bad file with its ERROR line.
# Usage: convert_all_test.sh SCRIPT REACHMAP
set -euo pipefail
script=$1
export REACHMAP=$2
src=$(cd "$(dirname "$script")" && pwd)
t=$(mktemp -d)
trap 'rm -rf "$t"' EXIT

mkdir -p "$t/a b/sub"
cp "$src/river.sdf" "$src/Header.prj" "$t/a b/"
cp "$src/river.sdf" "$t/a b/my river.sdf"
cp "$src/river.sdf" "$t/a b/sub/upper.sdf"
status=0
"$script" "$t" -shp -j 2 >"$t/summary" || status=$?
cat "$t/summary"

fail() { echo "FAIL: $*"; exit 1; }
[ "$status" -eq 1 ] || fail "exit status $status, want 1"
grep -qx 'Converted: 2 of 3' "$t/summary" || fail "count"
grep -qx "  $t/a b/sub/upper.sdf: ERROR - A Header.prj or Projection.prj file does not exist in folder." \
  "$t/summary" || fail "bad file and its ERROR line"
grep -q 'sdftidy FILE -o FIXED.sdf' "$t/summary" || fail "sdftidy offered"
for f in "a b/river.out/river.sdf_streams_L.shp" "a b/my river.out/my river.sdf_streams_L.shp"; do
  [ -s "$t/$f" ] || fail "missing $f"
done
# A second run converts the same three again and does not take the copies
# in the .out folders for more files.
"$script" "$t" -shp >"$t/again" || true
grep -qx 'Converted: 2 of 3' "$t/again" || fail "second run"
echo "convert_all: OK"
