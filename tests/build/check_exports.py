#!/usr/bin/python3
"""The headers' declarations, the export list and the binary's export table name the same functions: the 102 of TORVIK.h
and the one extension.

check_exports.py TORVIK.h TORVIKstatistics.h TORVIK.def BINARY
"""
import pathlib
import re
import subprocess
import sys


FUNCTIONS = 102
EXTENSION = ["TORVIKgetStatistics"]


def declared(header):
    code = re.sub(r"/\*.*?\*/", "", pathlib.Path(header).read_text(), flags=re.DOTALL)
    return re.findall(r"^int32_t (\w+)\(", code, flags=re.MULTILINE)


def listed(definition):
    lines = pathlib.Path(definition).read_text().split("\n")
    assert lines[0] == "EXPORTS", "the list starts with EXPORTS"
    return [line.strip() for line in lines[1:] if line.strip()]


def exported(binary):
    if binary.endswith(".dll"):
        table = subprocess.run(["llvm-readobj", "--coff-exports", binary], check=True, capture_output=True, text=True)
        return re.findall(r"^  Name: (\S+)$", table.stdout, flags=re.MULTILINE)
    table = subprocess.run(["nm", "-D", "--defined-only", binary], check=True, capture_output=True, text=True)
    return [line.split()[-1] for line in table.stdout.splitlines()]


def main():
    header, extension = declared(sys.argv[1]), declared(sys.argv[2])
    names = {"headers": header + extension, "list": listed(sys.argv[3]), "binary": exported(sys.argv[4])}
    problems = []
    if len(header) != FUNCTIONS:
        problems.append(f"the header declares {len(header)} functions, not {FUNCTIONS}")
    if extension != EXTENSION:
        problems.append(f"the extension's header declares {extension}, not {EXTENSION}")
    everything = set().union(*names.values())
    for place, present in names.items():
        print(f"{place}: {len(present)} functions")
        problems += [f"{name} is missing in the {place}" for name in sorted(everything - set(present))]
        if len(present) != len(set(present)):
            problems.append(f"the {place} names a function twice")
    if not everything:
        problems.append("no function found")
    print("\n".join(problems))
    sys.exit(1 if problems else 0)


main()
