#!/usr/bin/env bash
# Builds the fuzzers with clang in build/fuzz and lets each try RUNS inputs (200000 unless told; a tenth of them for benches),
# beginning with the sample calibration files and benches. An input that breaks something is kept in build/fuzz.
#
#   scripts/fuzz.sh [RUNS]
set -eu -o pipefail
. "$(dirname "$0")/lib.sh"
runs=${1:-200000}
[[ $runs =~ ^[1-9][0-9]*$ ]] || { sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2; }

seed=$(new_seed)
echo "TORVIK_SEED=$seed replays these inputs"
directory=$root/build/fuzz
samples=$root/examples/calibration
cmake -S "$root" -B "$directory" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTORVIK_BUILD_TESTS=OFF -DTORVIK_BUILD_FUZZERS=ON >/dev/null
cmake --build "$directory" --target ucf_parser_fuzz calibration_file_fuzz bench_file_fuzz

rm -rf "$directory/corpus"
mkdir -p "$directory/corpus/ucf_parser" "$directory/corpus/calibration_file" "$directory/corpus/bench_file"
cp "$root"/examples/benches/*.toml "$directory/corpus/bench_file/"
cp "$samples"/*.ini "$samples"/*.txt "$directory/corpus/ucf_parser/"
# One input: a calibration file and the matrix files it names, in the order in which they are read.
for file in "$samples"/*.ini; do
    input=$directory/corpus/calibration_file/$(basename "$file")
    cp "$file" "$input"
    for key in Matrix MatrixB; do
        matrix=$(sed -n "s/^$key=//p" "$file")
        [ -z "$matrix" ] || { printf '\036'; cat "$samples/$matrix"; } >>"$input"
    done
done

for name in ucf_parser calibration_file bench_file; do
    dictionary=calibration inputs=$runs
    # Each of these runs the amplifiers that it describes.
    [ "$name" != bench_file ] || dictionary=bench inputs=$(((runs + 9) / 10))
    say "$name: $inputs inputs"
    "$directory/fuzz/${name}_fuzz" -runs="$inputs" -seed="$seed" -max_len=4096 -timeout=10 -print_final_stats=1 -verbosity=1 \
        -dict="$root/fuzz/$dictionary.dict" -artifact_prefix="$directory/" \
        "$directory/corpus/$name" 2>&1 | grep -vE '^#[0-9]+\s+(NEW|REDUCE|pulse)' | tail -n 40
done
