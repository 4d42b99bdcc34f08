#!/usr/bin/python3
"""The headers' declarations, the export list and the binary's export table name the same functions: the 102 of TORVIK.h
and the extensions.

check_exports.py TORVIK.def BINARY TORVIK.h EXTENSION.h...
"""
import pathlib
import re
import subprocess
import sys


FUNCTIONS = 102
EXTENSIONS = ["TORVIKgetStatistics", "TORVIKcommand"]


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
    definition, binary, header, *extension_headers = sys.argv[1:]
    functions = declared(header)
    extensions = [name for extension in extension_headers for name in declared(extension)]
    names = {"headers": functions + extensions, "list": listed(definition), "binary": exported(binary)}
    problems = []
    if len(functions) != FUNCTIONS:
        problems.append(f"the header declares {len(functions)} functions, not {FUNCTIONS}")
    if extensions != EXTENSIONS:
        problems.append(f"the extensions' headers declare {extensions}, not {EXTENSIONS}")
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
