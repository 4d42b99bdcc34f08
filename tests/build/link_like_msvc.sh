#!/usr/bin/env bash
# A program built the way MSVC builds one takes the import library and runs:
# link_like_msvc.sh TORVIK.def TORVIK.lib WINE_RUN WORK_DIRECTORY
set -eu
definition=$1 library=$2 wine_run=$3 work=$4
cd "$work"
{
    echo '#include "TORVIK.h"'
    echo '#include "TORVIKstatistics.h"'
    echo '#include "TORVIKcommand.h"'
    echo 'void* every_function[] = {'
    sed -n 's/^  \(.*\)/    (void*)\1,/p' "$definition"
    echo '};'
    echo 'int start(void) {'
    echo '    uint32_t version = 0;'
    echo '    return TORVIKDllVersion(&version) == 0 && version == 0x00010011u ? 0 : 1;'
    echo '}'
} >every_function.c
clang --target=x86_64-pc-windows-msvc -ffreestanding -O1 -I "$(dirname "$definition")" -c every_function.c \
    -o every_function.obj
lld-link /nologo /nodefaultlib /entry:start /subsystem:console /out:every_function.exe every_function.obj "$library"
imported=$(llvm-readobj --coff-imports every_function.exe | grep -c 'Symbol: TORVIK')
listed=$(grep -c '^  ' "$definition")
echo "$imported of $listed functions imported"
[ "$imported" -eq "$listed" ]
"$wine_run" every_function.exe
