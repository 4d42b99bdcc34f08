#!/usr/bin/python3
"""The header's declarations, the export list and the binary's export table name the same functions.

check_exports.py TORVIK.h TORVIK.def BINARY
"""
import pathlib
import re
import subprocess
import sys


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
    names = {"header": declared(sys.argv[1]), "list": listed(sys.argv[2]), "binary": exported(sys.argv[3])}
    problems = []
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
