#!/usr/bin/env bash
# Converts every .sdf file under a folder, in parallel, and says which ones
# stopped on an error.
#
#   convert_all.sh DIR [-shp|-mif] [-notrim] [-j N]   all files under DIR, then the summary
#   convert_all.sh --one [-shp|-mif] [-notrim] FILE   one file (what each job runs)
#   convert_all.sh --summary DIR                      the summary alone
#
# Each file a.sdf is converted in a folder of its own beside it, a.out/, which
# gets a link to (or copy of) the file and of the Header.prj, Header.mif,
# Projection.prj and Projection.mif of its folder; the run's transcript is
# a.out/reachmap.log. Jobs: -j N, else $JOBS, else the number of cores; GNU
# parallel runs them when it is installed, xargs -P otherwise. The converter
# is $REACHMAP, else reachmap on PATH, else this checkout's release build;
# with more than one job it runs with REACHMAP_THREADS=1 unless that is set.
#
# The converter's exit status is always 0, so the summary reads the logs: a
# file is converted when its log has "Finished."; the files whose log has an
# ERROR line are listed with that line. The exit status of this script is 0
# when every file was converted, 1 otherwise.
set -uo pipefail

here=$(cd "$(dirname "$0")" && pwd)
self="$here/$(basename "$0")"

usage() {
    sed -n '4,6s/^#   //p' "$self" >&2
    exit 2
}

find_reachmap() {
    if [ -n "${REACHMAP:-}" ]; then
        echo "$REACHMAP"
    elif command -v reachmap >/dev/null; then
        command -v reachmap
    elif [ -x "$here/../build/release/driver/reachmap" ]; then
        echo "$here/../build/release/driver/reachmap"
    else
        echo "convert_all.sh: no reachmap: set REACHMAP or put it on PATH" >&2
        exit 2
    fi
}

# sdftidy on PATH, or beside the converter (installed, or in its build tree).
find_sdftidy() {
    local rm dir
    rm=$(find_reachmap 2>/dev/null) || return 1
    dir=$(dirname "$rm")
    for t in "$(command -v sdftidy)" "$dir/sdftidy" "$dir/../tidy/sdftidy"; do
        [ -n "$t" ] && [ -x "$t" ] && { readlink -f "$t"; return 0; }
    done
    return 1
}

# Options first, the file last.
convert_one() {
    local file=${!#}
    set -- "${@:1:$#-1}"
    local dir name out rm
    rm=$(find_reachmap) || exit 2
    case $rm in /*) ;; *) rm="$PWD/$rm" ;; esac
    dir=$(dirname "$file")
    name=$(basename "$file")
    out="$dir/${name%.*}.out"
    mkdir -p "$out" || exit 1
    for f in "$name" Header.prj Header.mif Projection.prj Projection.mif; do
        [ -f "$dir/$f" ] && { ln -f "$dir/$f" "$out/$f" 2>/dev/null || cp -f "$dir/$f" "$out/$f"; }
    done
    # The bare name, as layer names are taken from it up to its first dot; a
    # name that starts like an option goes as ./name (its layers then lose
    # the stem). Standard input closed, so that the closing pause and any
    # question end at once.
    local arg=$name
    case $name in -* | –*) arg="./$name" ;; esac
    (cd "$out" && "$rm" "$@" "$arg" </dev/null >reachmap.log 2>&1)
}

# The logs of the .out folders under DIR.
summary() {
    local top=$1 ok=0 failed=0 log src first tidy
    local -a errors=()
    while IFS= read -r -d '' log; do
        src="$(dirname "$log")"
        src="${src%.out}.sdf"
        if first=$(grep -m1 '^ *ERROR' "$log"); then
            failed=$((failed + 1))
            errors+=("$src: $first")
        elif grep -q '^ *Finished\.' "$log"; then
            ok=$((ok + 1))
        else
            failed=$((failed + 1))
            errors+=("$src: ended without Finished. (see $log)")
        fi
    done < <(find "$top" -type d -name '*.out' -prune -exec test -f '{}/reachmap.log' \; -print0 |
        while IFS= read -r -d '' d; do printf '%s/reachmap.log\0' "$d"; done | sort -z)
    echo "Converted: $ok of $((ok + failed))"
    if [ "$failed" -gt 0 ]; then
        echo "Stopped on an error: $failed"
        printf '  %s\n' "${errors[@]}"
        if tidy=$(find_sdftidy); then
            echo "Check and repair them with sdftidy, e.g.:"
            echo "  $tidy FILE -o FIXED.sdf"
        fi
        return 1
    fi
}

case ${1:-} in
--one)
    [ $# -ge 2 ] || usage
    shift
    convert_one "$@"
    exit $?
    ;;
--summary)
    [ $# -eq 2 ] || usage
    summary "$2"
    exit $?
    ;;
"" | -*) usage ;;
esac

top=$1
shift
[ -d "$top" ] || { echo "convert_all.sh: $top is not a folder" >&2; exit 2; }
jobs=${JOBS:-$(nproc)}
args=()
while [ $# -gt 0 ]; do
    case $1 in
    -j) [ $# -ge 2 ] || usage; jobs=$2; shift 2 ;;
    -j*) jobs=${1#-j}; shift ;;
    *) args+=("$1"); shift ;;
    esac
done
export REACHMAP
REACHMAP=$(find_reachmap) || exit 2
# With several jobs the cores are busy already: each conversion keeps to one
# thread (reading ahead on a second would only add work), unless told otherwise.
if [ "$jobs" -gt 1 ]; then export REACHMAP_THREADS=${REACHMAP_THREADS:-1}; fi

# Every .sdf under the folder, leaving out the copies in .out folders.
list() { find "$top" -type d -name '*.out' -prune -o -type f -iname '*.sdf' -print0; }
if parallel --version 2>/dev/null | grep -q 'GNU parallel'; then
    list | parallel -0 -j "$jobs" "$self" --one "${args[@]}" {}
else
    list | xargs -0 -r -n 1 -P "$jobs" "$self" --one "${args[@]}"
fi
summary "$top"
