#!/usr/bin/env bash
# Both systems put identical bytes on the wire and deliver identical values: runs tests/proof/transcript of the Linux and of
# the Windows build and compares what they wrote, and what the tool writes. Prints how much that was.
#
#   scripts/compare-systems.sh [--builds LINUX_FOLDER WINDOWS_FOLDER] [SIZE [SEED]]
#
# SIZE: how many random calls, 10 by default. SEED: TORVIK_SEED by default, or another one each time. Without --builds
# both are built first.
set -eu -o pipefail
. "$(dirname "$0")/lib.sh"

linux=$root/build/linux windows=$root/build/windows
if [ "${1:-}" = --builds ]; then
    linux=$(realpath "${2:?}") windows=$(realpath "${3:?}")
    shift 3
else
    build linux transcript torvik_tool >&2
    build windows transcript torvik_tool >&2
fi
size=${1:-10} seed=${2:-$(new_seed)}
echo "TORVIK_SEED=$seed replays these calls"
results=$root/build/transcripts
rm -rf "$results"
mkdir -p "$results/linux" "$results/windows"

# write_texts BUILD_FOLDER SAMPLE_FOLDER SUFFIX [STARTER...]: writes everything to the working folder.
write_texts() {
    local folder=$1 samples=$2 suffix=$3
    shift 3
    local tool=("$@" "$folder/torvik$suffix")
    LD_LIBRARY_PATH=$folder/virtual:$folder "$@" "$folder/tests/proof/transcript$suffix" "$seed" "$size" "$samples"
    "${tool[@]}" explain >tool-explain.txt
    "${tool[@]}" list >tool-list.txt
    "${tool[@]}" filter design bandpass bessel 31.7 88.2 --rate 1234.5 >tool-filter-design.txt
    "${tool[@]}" config save tool-config.txt --simulate >&2
}

(cd "$results/linux" && write_texts "$linux" "$root/examples/calibration" "")
(cd "$results/windows" && write_texts "$windows" "Z:$root/examples/calibration" .exe "$root/scripts/wine-run.sh")
"$python" -B "$root/tests/proof/compare_transcripts.py" "$results/linux" "$results/windows" "$root/src/api/TORVIK.def"
