#!/usr/bin/env bash
# Installs the Debian packages that building and testing need and that are missing.
set -eu
. "$(dirname "$0")/lib.sh"
install_missing "${packages_to_build[@]}" "${packages_to_test[@]}"
