#!/usr/bin/env bash
# Runs every fuzz target of a built fuzz preset on its seeds for a while.
#
#   fuzz/run_fuzz.sh [SECONDS] [TARGET...]
#
# Builds the seeds first (fuzz/make_seeds.py, with the converter of the same
# build). Each target runs SECONDS (default 60) on one core; new inputs go to
# build/fuzz/corpus/<target>, a crash to build/fuzz/crash/<target>-*. The
# script fails when any target finds a crash, an internal stop, a sanitizer
# report, a disagreement with the C library or a hang.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(sdf_shp sdf_mif shp dbf mif numbers)
# Absolute paths: the targets work in a scratch folder of their own.
root=$(pwd)
build=$root/build/fuzz
seeds=$build/seeds
rm -rf "$seeds"
python3 fuzz/make_seeds.py "$build/driver/reachmap" "$seeds"
mkdir -p "$build/crash"
failed=()
for t in "${targets[@]}"; do
  s=$t
  extra=()
  case $t in sdf_*) s=sdf; extra=(-dict="$root/fuzz/sdf.dict") ;; esac
  mkdir -p "$build/corpus/$t"
  echo "== fuzz_$t for ${seconds}s"
  if ! "$build/fuzz/fuzz_$t" "${extra[@]}" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$build/crash/$t-" "$build/corpus/$t" "$seeds/$s" \
      > "$build/fuzz_$t.log" 2>&1; then
    failed+=("$t")
    tail -n 40 "$build/fuzz_$t.log"
  fi
  grep -E "^#[0-9]+ +DONE|stat::number_of_executed_units|stat::average_exec_per_sec" "$build/fuzz_$t.log" || true
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "Fuzz targets that failed: ${failed[*]}"
  exit 1
fi
