#!/usr/bin/env bash
# Runs a Windows program under Wine: wine-run.sh PROGRAM.exe [ARGUMENT...]
# The folders in LD_LIBRARY_PATH are where the program's libraries are looked for, as on Linux. Wine's settings stand in a
# prefix of their own (WINEPREFIX), so that the user's are left alone.
set -eu
wine=$(command -v wine64 || command -v wine || true)
[ -n "$wine" ] || wine=/usr/lib/wine/wine64
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
export WINEPREFIX=${WINEPREFIX:-${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/torvik-wine}
mkdir -p "$WINEPREFIX"
if [ -n "${LD_LIBRARY_PATH:-}" ]; then
    windows_path=
    IFS=: read -ra folders <<<"$LD_LIBRARY_PATH"
    for folder in "${folders[@]}"; do
        windows_path="${windows_path:+$windows_path;}Z:$folder"
    done
    export WINEPATH="$windows_path${WINEPATH:+;$WINEPATH}"
    unset LD_LIBRARY_PATH
fi
exec "$wine" "$@"
