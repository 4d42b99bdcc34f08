#!/usr/bin/python3
"""Keeps the shape of the source tree: check_layers.py SOURCE_ROOT

- A folder of src/ includes only the folders it stands on; nothing includes api/.
- No file includes itself, directly or through others.
- Operating systems are told apart by folders (platform/, linux/, windows/), not by the preprocessor, and their headers
  stay in those folders.
"""
import pathlib
import re
import sys

STANDS_ON = {
    "api": {"api", "calib", "params", "filter", "core", "can", "platform"},
    "calib": {"calib", "params", "core", "platform"},
    "filter": {"filter", "core", "platform"},
    "params": {"params", "core", "platform"},
    "core": {"core", "can", "platform"},
    "can": {"can", "core", "platform"},  # the receive thread stores into core's device records
    "platform": {"platform"},
}
SYSTEM_FOLDERS = {"platform", "linux", "windows"}
SYSTEM_CONDITION = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*(_WIN|WIN32|_MSC_VER|__MINGW|__linux|__unix|__APPLE__)")
SYSTEM_HEADERS = re.compile(r"^\s*#\s*include <(windows\.h|winbase\.h|synchapi\.h|unistd\.h|dlfcn\.h|pthread\.h|poll\.h|sys/.*)>")
OWN_INCLUDE = re.compile(r'^\s*#\s*include "([^"]+)"')
TREES = ("src", "adapters", "tools", "tests", "bench", "examples")


def source_files(root):
    for tree in TREES:
        for pattern in ("*.cpp", "*.hpp", "*.h", "*.c"):
            yield from sorted((root / tree).rglob(pattern))


def includes_of(source, file):
    """Our own files that a file includes, as paths below src/."""
    bases = (source, file.parent, source / "platform/linux", source / "platform/windows")
    for line in file.read_text().splitlines():
        if match := OWN_INCLUDE.match(line):
            for base in bases:
                if (base / match[1]).is_file() and (base / match[1]).resolve().is_relative_to(source):
                    yield (base / match[1]).resolve().relative_to(source)


def system_problems(root):
    for file in source_files(root):
        parts = file.relative_to(root).parts
        if SYSTEM_FOLDERS & set(parts):
            continue
        for number, line in enumerate(file.read_text().splitlines(), 1):
            if SYSTEM_CONDITION.match(line) or (parts[0] == "src" and SYSTEM_HEADERS.match(line)):
                yield f"{file.relative_to(root)}:{number}: {line.strip()}"


def layer_problems(graph):
    for file, included in graph.items():
        for other in included:
            if other.parts[0] not in STANDS_ON.get(file.parts[0], set()):
                yield f"src/{file} includes {other}"


def circles(graph):
    done, path = set(), []

    def visit(file):
        if file in path:
            yield " -> ".join(str(step) for step in [*path[path.index(file):], file])
            return
        if file in done:
            return
        path.append(file)
        for other in graph.get(file, ()):
            yield from visit(other)
        path.pop()
        done.add(file)

    for file in graph:
        yield from visit(file)


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    source = root / "src"
    graph = {file.relative_to(source): list(includes_of(source, file))
             for file in source_files(root) if file.is_relative_to(source)}
    print(f"{len(graph)} files")
    problems = [*system_problems(root), *layer_problems(graph), *(f"circle: {circle}" for circle in circles(graph))]
    if not graph:
        problems.append("no source file found")
    print("\n".join(problems))
    sys.exit(1 if problems else 0)


main()
