#!/usr/bin/env bash
# Runs a Windows program under Wine: wine-run.sh PROGRAM.exe [ARGUMENT...]
# Everything it needs stands in a prefix of its own, so that the user's own Wine settings are left alone.
set -eu
wine=$(command -v wine64 || command -v wine || true)
[ -n "$wine" ] || wine=/usr/lib/wine/wine64
export WINEDEBUG=${WINEDEBUG:--all}
export WINEPREFIX=${WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/torvik-wine}
mkdir -p "$WINEPREFIX"
exec "$wine" "$@"
