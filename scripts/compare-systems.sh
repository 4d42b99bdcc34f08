#!/usr/bin/env bash
# Both systems put identical bytes on the wire and deliver identical values: runs tests/proof/transcript of the Linux and of
# the Windows build and compares what they wrote. Prints how much that was.
#
#   scripts/compare-systems.sh [--builds LINUX_FOLDER WINDOWS_FOLDER] [SIZE [SEED]]
#
# SIZE: how many random calls, 10 usually. Without --builds both are built first.
set -eu -o pipefail
. "$(dirname "$0")/lib.sh"

linux=$root/build/linux windows=$root/build/windows
if [ "${1:-}" = --builds ]; then
    linux=$(realpath "${2:?}") windows=$(realpath "${3:?}")
    shift 3
else
    build linux transcript >&2
    build windows transcript >&2
fi
size=${1:-10} seed=${2:-1}
results=$root/build/transcripts
rm -rf "$results"
mkdir -p "$results/linux" "$results/windows"

# record SYSTEM BUILD_FOLDER SAMPLE_FOLDER PROGRAM...
record() {
    local folder=$results/$1 libraries=$2/virtual:$2 samples=$3
    shift 3
    (cd "$folder" && LD_LIBRARY_PATH=$libraries "$@" "$seed" "$size" "$samples") ||
        { echo "the transcript was not written: $*" >&2; return 1; }
}
record linux "$linux" "$root/examples/calibration" "$linux/tests/proof/transcript"
record windows "$windows" "Z:$root/examples/calibration" "$root/scripts/wine-run.sh" "$windows/tests/proof/transcript.exe"
"$python" -B "$root/tests/proof/compare_transcripts.py" "$results/linux" "$results/windows" "$root/src/api/TORVIK.def"
