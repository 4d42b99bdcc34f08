#!/usr/bin/python3
"""The library needs nothing but the operating system and the C and C++ run-time: check_imports.py BINARY

Windows: KERNEL32 and the C run-time alone. Linux: no unique symbol either, because one would keep dlclose from unloading.
"""
import re
import subprocess
import sys

WINDOWS = {"kernel32.dll", "msvcrt.dll"}
LINUX = {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6", "ld-linux-x86-64.so.2"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def main():
    binary = sys.argv[1]
    if binary.endswith(".dll"):
        imports = re.findall(r"^  Name: (\S+)$", output("llvm-readobj", "--coff-imports", binary), flags=re.MULTILINE)
        needed, allowed = {name.lower() for name in imports}, WINDOWS
    else:
        needed = set(re.findall(r"NEEDED\s+(\S+)", output("objdump", "-p", binary)))
        allowed = LINUX
    print("needs", *sorted(needed))
    problems = [f"needs {name}" for name in sorted(needed - allowed)]
    if not needed:
        problems.append("no import found")
    if not binary.endswith(".dll"):
        problems += [f"unique symbol: {line}" for line in output("nm", binary).splitlines() if line.split()[-2] == "u"]
    print("\n".join(problems))
    sys.exit(1 if problems else 0)


main()
