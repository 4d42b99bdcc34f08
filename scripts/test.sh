#!/usr/bin/env bash
# Builds for Linux and Windows, runs all tests and checks, and closes with the line "N passed, N failed, N skipped".
#
#   scripts/test.sh [--only STAGE[,STAGE...]] [--no-install]
#
# Stages, in this order:
#   linux    build with GCC, all tests
#   windows  build with mingw-w64, all tests under Wine; what every export sends and delivers is the same as on Linux
#   asan     build with clang and its thread-safety analysis, all tests with the address and undefined-behaviour sanitizers
#   tsan     the same with the thread sanitizer
#   fuzz     200,000 inputs for each fuzzer, with the address and undefined-behaviour sanitizers
#   format   clang-format leaves every source file as it is
#   tidy     clang-tidy finds nothing (.clang-tidy)
set -u -o pipefail
. "$(dirname "$0")/lib.sh"

all_stages=(linux windows asan tsan fuzz format tidy)
stages=("${all_stages[@]}")
install=yes
usage() { sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; }
while [ $# -gt 0 ]; do
    case $1 in
        --only) IFS=, read -ra stages <<<"${2:?--only needs stages}"; shift ;;
        --no-install) install=no ;;
        -h | --help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
    shift
done
for stage in "${stages[@]}"; do
    [[ " ${all_stages[*]} " == *" $stage "* ]] || { echo "no such stage: $stage" >&2; exit 2; }
done

exec </dev/null
logs=$root/build/logs
mkdir -p "$logs"
passed=0 failed=0 skipped=0 summary=() failures=()

# check NAME COMMAND...: one check, passed by its exit code; its output goes to a log, which is shown when it fails.
check() {
    local name=$1 log=$logs/${1// /-}.log
    shift
    if "$@" >"$log" 2>&1; then
        passed=$((passed + 1))
        return 0
    fi
    failed=$((failed + 1))
    failures+=("$name")
    echo "-- failed: $name; the end of $log:"
    tail -n 60 "$log"
    return 1
}

# run_tests PRESET [WRAPPER...]: runs the tests of a build and counts the cases in their reports.
run_tests() {
    local preset=$1 directory=$root/build/$1 log=$logs/$1-tests.log counts name
    shift
    rm -rf "$directory/results" "$directory/ctest.xml"
    mkdir -p "$directory/results"
    "$@" ctest --test-dir "$directory" -j3 --no-tests=error --output-on-failure --test-output-size-passed 65536 \
        --test-output-truncation head --output-junit ctest.xml >"$log" 2>&1 ||
        { echo "-- failed: tests of $preset; the end of $log:"; tail -n 120 "$log"; }
    counts=$("$python" "$root/scripts/count-results.py" "$directory" "$logs/$preset-failures.txt") || counts="0 1 0"
    read -r p f s <<<"$counts"
    passed=$((passed + p)) failed=$((failed + f)) skipped=$((skipped + s))
    while read -r name; do failures+=("$preset: $name"); done <"$logs/$preset-failures.txt"
}

start_wine() {
    wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
    mkdir -p "$WINEPREFIX"
    trap '"$wineserver" -k' EXIT
    "$wineserver" -p
    [ -f "$WINEPREFIX/system.reg" ] || "$root/scripts/wine-run.sh" wineboot --init
    "$root/scripts/wine-run.sh" cmd /c exit
}

stage_linux() { check "linux build" build linux && run_tests linux; }
stage_windows() {
    check "windows build" build windows || return
    if check "wine start" start_wine; then
        run_tests windows
        check "same on both systems" "$root/scripts/compare-systems.sh"
    fi
    "$wineserver" -k
    trap - EXIT
}
stage_asan() { check "asan build" build asan && run_tests asan; }
stage_tsan() {
    # The thread sanitizer's memory map does not stand the largest address randomisation.
    local wrapper=()
    setarch -R true 2>/dev/null && wrapper=(setarch -R)
    check "tsan build" build tsan && run_tests tsan "${wrapper[@]}"
}
stage_fuzz() { check "fuzzers" "$root/scripts/fuzz.sh"; }

sources_of() { (cd "$root" && find "$@" -name '*.cpp' -o -name '*.hpp' -o -name '*.h' -o -name '*.c' 2>/dev/null | sort); }
check_format() { sources_of src adapters tools tests bench examples fuzz | (cd "$root" && xargs clang-format --dry-run -Werror); }
stage_format() { check "format" check_format; }

check_tidy() { (cd "$root" && cmake --preset clang) && "$root/scripts/tidy.py" "$root/build/clang"; }
stage_tidy() { check "tidy" check_tidy; }

if [ "$install" = yes ] && ! install_missing "${packages_to_build[@]}" "${packages_to_test[@]}"; then
    echo "0 passed, 1 failed, 0 skipped"
    exit 1
fi
for stage in "${stages[@]}"; do
    say "$stage"
    began=$SECONDS passed_before=$passed failed_before=$failed
    "stage_$stage"
    summary+=("$(printf '%-8s %5d passed %5d failed %5d s' "$stage" $((passed - passed_before)) \
        $((failed - failed_before)) $((SECONDS - began)))")
done

say "summary"
printf '%s\n' "${summary[@]}"
printf 'whole run: %d s; logs in %s\n' "$SECONDS" "$logs"
[ ${#failures[@]} -eq 0 ] || printf 'FAILED: %s\n' "${failures[@]}"
echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]
