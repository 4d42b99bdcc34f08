#!/bin/sh
# finds_fault.sh COMMAND...: passes when the command tells a fault of a device and ends with exit code 1.
output=$("$@")
code=$?
printf '%s\nexit code %s\n' "$output" "$code"
[ "$code" -eq 1 ] && printf '%s\n' "$output" | grep -q '^FAULT device'
