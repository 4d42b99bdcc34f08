#!/usr/bin/env bash
# Builds the library and the tool, and shows a simulated six-channel amplifier measuring: demo.sh [SECONDS]
# No hardware and no configuration are needed. What it writes stands in build/demo/.
set -eu
. "$(dirname "$0")/lib.sh"
seconds=${1:-5}
directory=$root/build/demo
values=$directory/measured-values.csv

install_missing "${packages_to_build[@]}"
say "building (the log is $directory/build.log)"
mkdir -p "$directory"
if ! build demo >"$directory/build.log" 2>&1; then
    tail -n 40 "$directory/build.log"
    echo "The build failed." >&2
    exit 1
fi
torvik=$directory/torvik

say "the amplifier: torvik --simulate info"
"$torvik" --simulate info

say "one second of values into a file: torvik --simulate stream --seconds 1"
"$torvik" --simulate stream --seconds 1 >"$values"

say "$seconds seconds live: torvik --simulate stream --seconds $seconds"
if [ -t 1 ]; then
    "$torvik" --simulate stream --seconds "$seconds"
else
    "$torvik" --simulate stream --seconds "$seconds" | awk 'NR == 1 || NR % 500 == 2'
    echo "(standard output is no terminal: every 500th set, as comma-separated values; a terminal shows a live table)"
fi

say "done: the amplifier is released"
echo "written: $values, $(($(wc -l <"$values") - 1)) sets of values"
echo "the tool: $torvik --help"
