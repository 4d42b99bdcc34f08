#!/usr/bin/env bash
# Measures the library against simple references and prints one table of ratios, each with its goal.
#
#   scripts/bench.sh [--rounds N] [--strict] [--times]
#
#   --rounds N  rounds of alternating runs, whose median counts (15)
#   --strict    exit code 3 when a goal is missed; otherwise only what could not be measured or was wrong fails (1)
#   --times     print the median time of an iteration of each benchmark, too
set -eu
. "$(dirname "$0")/lib.sh"
directory=$root/build/linux
case ${1:-} in
    -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; exit 0 ;;
esac

install_missing "${packages_to_build[@]}" "${packages_to_test[@]}"
mkdir -p "$directory"
say "building (the log is $directory/bench-build.log)"
if ! build linux torvik_bench filter_times TORVIK virtual_adapter >"$directory/bench-build.log" 2>&1; then
    tail -n 40 "$directory/bench-build.log"
    echo "The build failed." >&2
    exit 1
fi
say "measuring"
code=0
strict=
[[ " $* " == *" --strict "* ]] && strict=--strict
# keep CODE: the exit code of all; what could not be measured counts more than a missed goal.
keep() { [ "$code" -eq 1 ] || [ "$1" -eq 0 ] || code=$1; }
"$directory/bench/torvik_bench" "$@" || keep $?
"$python" "$root/bench/bus_time.py" "$directory" $strict || keep $?
"$python" "$root/bench/filter_speed.py" "$directory" $strict || keep $?
echo "load of the machine (1, 5, 15 minutes): $(cut -d' ' -f1-3 /proc/loadavg) on $(nproc) processors; see docs/benchmarks.md"
exit "$code"
