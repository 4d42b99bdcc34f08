#!/usr/bin/env bash
# Compiles the public header with nothing else in the file: compile_header.sh c|cpp alone|alone_twice COMPILER HEADER
set -eu
language=$1 times=$2 compiler=$3 header=$4
case $language in
    c) options=(-x c -std=c99) ;;
    cpp) options=(-x c++ -std=c++11) ;;
esac
include="#include \"$header\""
{
    echo "$include"
    [ "$times" = alone ] || echo "$include"
} | "$compiler" "${options[@]}" -Wall -Wextra -pedantic -Werror -fsyntax-only -
