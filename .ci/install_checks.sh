#!/usr/bin/env bash
# The installed tree and the Debian package: the release build installed to a
# temporary prefix, a small project built against it with find_package, the
# installed reachmap on the example; then the .deb built, installed with apt,
# and /usr/bin/reachmap on the example; and the manual page checked by groff
# and mandoc. Runs as root (apt-get) with no standard input.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD

need=()
command -v dpkg-shlibdeps >/dev/null || need+=(dpkg-dev)
command -v groff >/dev/null || need+=(groff)
command -v mandoc >/dev/null || need+=(mandoc)
if [ ${#need[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get install -y "${need[@]}" || { apt-get update && apt-get install -y "${need[@]}"; }
fi

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# The converter in a fresh copy of the example's folder; its transcript must
# end the run with "Finished." (the exit status is 0 either way).
convert_example() {
  local program=$1 dir=$2
  mkdir -p "$dir"
  cp examples/river.sdf examples/Header.prj examples/Header.mif "$dir"
  (cd "$dir" && "$program" -shp river.sdf </dev/null >reachmap.log)
  grep -q '^ *Finished\.' "$dir/reachmap.log" || { cat "$dir/reachmap.log"; echo "$program did not finish"; exit 1; }
  ls "$dir"/*_L.shp >/dev/null
  echo "$program converted the example"
}

cmake --preset release
cmake --build --preset release
cmake --install build/release --prefix "$tmp/prefix"

# A project of its own, built against the installed tree only.
cmake -S tests/install -B "$tmp/consumer" -DCMAKE_PREFIX_PATH="$tmp/prefix" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror"
cmake --build "$tmp/consumer"
mkdir "$tmp/layers"
"$tmp/consumer/consumer" "$tmp/layers" </dev/null | tee "$tmp/consumer.log" | tail -n 1
tail -n 1 "$tmp/consumer.log" | grep -qx 'consumer: OK'

convert_example "$tmp/prefix/bin/reachmap" "$tmp/installed"

# The Debian package.
(cd build/release && rm -f reachmap_*.deb && cpack -G DEB)
deb=$(ls build/release/reachmap_*.deb)
dpkg -I "$deb"
if dpkg-deb -f "$deb" Depends | tr ',' '\n' | grep -vE '^ *(libc6|libstdc\+\+6|libgcc-s1)( |$)'; then
  echo "the package depends on more than the C and C++ runtime"; exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get install -y "$top/$deb"
convert_example /usr/bin/reachmap "$tmp/packaged"

# The manual page: no warnings from either formatter.
out=$(groff -man -ww -z docs/reachmap.1 2>&1)
[ -z "$out" ] || { echo "$out"; exit 1; }
mandoc -T lint -W warning docs/reachmap.1
echo "install checks passed"
