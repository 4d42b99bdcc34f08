#!/usr/bin/env bash
# Builds the library and the tool, and shows a simulated six-channel amplifier measuring, what a digital filter does to
# the noise of another one, and what a calibration makes of a six-axis sensor's signals: demo.sh [SECONDS]
# No hardware and no configuration are needed. What it writes stands in build/demo/.
set -eu
. "$(dirname "$0")/lib.sh"
seconds=${1:-5}
directory=$root/build/demo
values=$directory/measured-values.csv

install_missing "${packages_to_build[@]}" "${packages_to_plot[@]}"
say "building the library, the simulated amplifiers and the tool: two or three minutes the first time (log: build/demo/build.log)"
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

low_pass=(lowpass butterworth 50)
say "a low pass: torvik filter design ${low_pass[*]} --rate 1000"
"$torvik" filter design "${low_pass[@]}" --rate 1000

say "its step and frequency response: torvik filter plot low-pass.png ${low_pass[*]} --rate 1000"
"$torvik" filter plot "$directory/low-pass.png" "${low_pass[@]}" --rate 1000

say "loaded into an amplifier with noise: torvik filter load 1 ${low_pass[*]} --noise 2 --simulate examples/benches/noise.toml"
"$torvik" filter load 1 "${low_pass[@]}" --noise 2 --simulate "$root/examples/benches/noise.toml"

calibration=$root/examples/calibration/version4-matrix-b.ini
say "a calibration file, checked: torvik calibration check examples/calibration/version4-matrix-b.ini"
"$torvik" calibration check "$calibration"

say "loaded into the amplifier of a six-axis sensor: torvik calibration load ... --slot 1 --values 1 --simulate examples/benches/six-axis.toml"
echo "(the mean values of the stream: first the signals of the bridges, then forces and torques)"
"$torvik" calibration load "$calibration" --slot 1 --values 1 --simulate "$root/examples/benches/six-axis.toml"

say "done: the amplifiers are released"
echo "written: $values, $(($(wc -l <"$values") - 1)) sets of values"
echo "written: $directory/low-pass.png, and beside it the two responses as text"
echo "the tool: $torvik --help"
