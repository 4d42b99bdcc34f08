#!/usr/bin/env bash
# Runs the proofs at full size, one after the other, and enters commit, machine and figures of each into
# docs/proof-results.md. Takes hours. docs/proof.md describes what each proof shows.
#
#   scripts/prove.sh [--list] [--no-install] [NAME...]
#
# NAME: only these. --list names them with their commands. Logs go to build/logs/prove-NAME.log.
# Two runs with different names may go side by side, but for those that measure time (bench, frozen, cycles).
set -u -o pipefail
. "$(dirname "$0")/lib.sh"

# One line for each proof: proof NAME PRESET TARGETS COMMAND...; built with the preset, run in its build folder.
all_proofs() {
    proof full-bus linux full_bus tests/proof/frames/full_bus --frames 5450000000
    proof full-bus-singly linux full_bus tests/proof/frames/full_bus --frames 100000000 --singly
    proof hostile-frames-asan asan hostile_frames tests/proof/frames/hostile_frames --frames 1000000000 --seed 1
    proof hostile-frames-tsan tsan hostile_frames without_randomised_addresses \
        tests/proof/frames/hostile_frames --frames 100000000 --seed 2
    proof every-fault linux every_fault_test over_seeds 100 tests/faults/every_fault_test --gtest_brief=1
    proof every-fault-all-makes linux every_fault_test env TORVIK_FAULT_MAKES=all \
        tests/faults/every_fault_test --gtest_brief=1
    proof failure-sweep linux failure_sweep_test tests/faults/failure_sweep_test --gtest_brief=1
    proof frozen linux frozen_reader "$python" "$root/tests/proof/frozen_test.py" tests/proof/frozen_reader 20
    proof chaos linux chaos tests/proof/chaos/chaos 10000000
    proof chaos-tsan tsan chaos without_randomised_addresses tests/proof/chaos/chaos 10000000
    proof chaos-windows windows chaos under_wine tests/proof/chaos/chaos.exe 1000000
    proof cycles linux cycles_test many_cycles tests/proof/cycles/cycles_test
    proof cycles-windows windows cycles_test many_cycles under_wine tests/proof/cycles/cycles_test.exe
    proof same-on-both-systems linux transcript "$root/scripts/compare-systems.sh" 100 2
    proof filter-designs linux design_filter "$python" "$root/tests/filter/random_designs_test.py" \
        tests/filter/design_filter 20000
    proof coverage linux TORVIK "$root/scripts/coverage.sh"
    proof bench linux torvik_bench "$root/scripts/bench.sh" --strict
    proof mutation linux "core_test params_test filter_test filter_exports_test calibration_file_test" \
        "$root/tests/mutation/mutation.py" .
}

only=() list=no install=yes
while [ $# -gt 0 ]; do
    case $1 in
        --list) list=yes ;;
        --no-install) install=no ;;
        -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; exit 0 ;;
        -*) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0" >&2; exit 2 ;;
        *) only+=("$1") ;;
    esac
    shift
done

logs=$root/build/logs
passed=0 failed=() known=()
export ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1

# The thread sanitizer's memory map does not stand the largest address randomisation.
without_randomised_addresses() {
    if setarch -R true 2>/dev/null; then setarch -R "$@"; else "$@"; fi
}

# over_seeds LAST COMMAND...: with the seeds 1..LAST, until one fails.
over_seeds() {
    local last=$1 seed
    shift
    for seed in $(seq "$last"); do
        TORVIK_SEED=$seed "$@" || return 1
    done
}

# Run in the build folder, where the adapter's library lies.
under_wine() { LD_LIBRARY_PATH=$PWD/virtual:$PWD "$root/scripts/wine-run.sh" "$@"; }

many_cycles() { TORVIK_CYCLES=10000 TORVIK_CYCLES_WITHOUT_RELEASE=1000 TORVIK_EXITS=1000 "$@"; }

proof() {
    local name=$1 preset=$2 targets=$3 log=$logs/prove-$1.log began=$SECONDS result=failed
    shift 3
    known+=("$name")
    [ ${#only[@]} -eq 0 ] || [[ " ${only[*]} " == *" $name "* ]] || return 0
    if [ "$list" = yes ]; then
        printf '%-22s %s\n' "$name" "$*"
        return 0
    fi
    say "$name: $*"
    # shellcheck disable=SC2086
    if (flock 9; build "$preset" $targets) 9>"$logs/prove-build.lock" >"$logs/prove-$name-build.log" 2>&1; then
        (cd "$root/build/$preset" && "$@") 2>&1 | tee "$log" && result=passed
    else
        cp "$logs/prove-$name-build.log" "$log"
    fi
    "$root/scripts/proof-results.py" "$name" "$result" $((SECONDS - began)) "$log" "$*" || result=failed
    if [ "$result" = passed ]; then
        passed=$((passed + 1))
    else
        failed+=("$name")
        echo "-- failed: $name; see $log"
    fi
    echo "$((SECONDS - began)) s"
}

mkdir -p "$logs"
if [ "$list" = no ] && [ "$install" = yes ]; then
    install_missing "${packages_to_build[@]}" "${packages_to_test[@]}" || exit 1
fi
all_proofs
for name in "${only[@]}"; do
    [[ " ${known[*]} " == *" $name "* ]] || { echo "no such proof: $name" >&2; exit 2; }
done
[ "$list" = yes ] && exit 0
[ ${#failed[@]} -eq 0 ] || printf 'FAILED: %s\n' "${failed[@]}"
echo "$passed passed, ${#failed[@]} failed"
[ ${#failed[@]} -eq 0 ]
