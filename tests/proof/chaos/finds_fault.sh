#!/bin/sh
# finds_fault.sh SPOIL COMMAND...: passes when the spoilt command does not hold, and for the reason that the fault is.
spoil=$1
shift
case $spoil in
    late-answer) reason='a call took more than a second beside its documented waits' ;;
    refusals) reason='too many calls of normal phases failed' ;;
    *) exit 2 ;;
esac
output=$("$@" 1000 1 --spoil "$spoil")
code=$?
printf '%s\nexit code %s\n' "$output" "$code"
[ "$code" -eq 1 ] && printf '%s\n' "$output" | grep -qF "NOT HELD: $reason"
