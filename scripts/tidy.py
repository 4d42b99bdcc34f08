#!/usr/bin/python3
"""Looks at what a build compiles of library, adapter and tool with clang-tidy: tidy.py BUILD_DIRECTORY

Each file as it is compiled, several in one where the build takes them together. The static analyser, which takes minutes
for the header-only libraries, looks at the library only. Exit code 1: something was found.
"""
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
ANALYSED = "src"
LOOKED_AT = (ANALYSED, "adapters", "tools")


def folder_of(file, build):
    """The first folder below the root or the build tree; a file of neither has none."""
    for base in (build, ROOT):
        if file.is_relative_to(base):
            return file.relative_to(base).parts[0]
    return None


def look_at(file, build):
    # Without the option the analyser passes over what is compiled together, because that is included.
    checks = ["--extra-arg=-Xclang", "--extra-arg=-analyzer-opt-analyze-headers"]
    if folder_of(file, build) != ANALYSED:
        checks = ["--checks=-clang-analyzer-*"]
    return subprocess.run(["clang-tidy", "--quiet", *checks, "-p", build, file], capture_output=True, text=True, check=False)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    files = {pathlib.Path(entry["file"]) for entry in json.loads((build / "compile_commands.json").read_text())}
    files = [file for file in files if folder_of(file, build) in LOOKED_AT]
    # What is compiled together takes longest and comes first.
    files.sort(key=lambda file: (not file.is_relative_to(build), str(file)))
    if not files:
        sys.exit(f"{build} compiles nothing of {', '.join(LOOKED_AT)}")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda file: look_at(file, build), files))
    for file, result in zip(files, results):
        if result.returncode != 0:
            print(f"{file}:\n{result.stdout}{result.stderr}")
    print(f"{len(files)} files looked at, {sum(result.returncode != 0 for result in results)} with findings")
    return 1 if any(result.returncode for result in results) else 0


if __name__ == "__main__":
    sys.exit(main())
