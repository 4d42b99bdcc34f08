#!/usr/bin/python3
"""Compares what the program `transcript` wrote on Linux and on Windows.

compare_transcripts.py LINUX_FOLDER WINDOWS_FOLDER EXPORTS.def: the transcripts are equal line by line and name every
export; the response files and the texts of the tool are equal line by line. Line ends are the systems' own; the tool's are
everywhere the same.
"""
import pathlib
import re
import sys

TRANSCRIPT = "transcript.txt"
TOOL_PREFIX = "tool-"
# Tells how often something happened, which also depends on how fast.
NOT_COMPARED = {"TORVIKgetStatistics"}
SHOWN_AT_MOST = 10


class Difference(Exception):
    """What is not as it has to be."""


def lines_of(path, line_end):
    """The lines of a file, each of which ends as its system ends lines."""
    content = path.read_bytes()
    if b"\r" in content.replace(line_end, b"\n") or line_end == b"\r\n" and content.count(b"\n") != content.count(line_end):
        raise Difference(f"{path} has foreign line ends")
    return content.replace(line_end, b"\n").decode("latin-1").split("\n")


def compare_file(linux, windows):
    """The number of lines, each of which is the same in both files."""
    of_tool = linux.name.startswith(TOOL_PREFIX)
    left, right = lines_of(linux, b"\n"), lines_of(windows, b"\n" if of_tool else b"\r\n")
    different = [(number, pair) for number, pair in enumerate(zip(left, right), 1) if pair[0] != pair[1]]
    if different or len(left) != len(right):
        shown = "".join(f"\n  {number}: {one}\n  {number}: {other}" for number, (one, other) in different[:SHOWN_AT_MOST])
        raise Difference(f"{linux.name}: {len(different)} lines differ, {len(left)} and {len(right)} lines{shown}")
    return len(left) - 1


def check_coverage(transcript, definition):
    """The transcript is complete and has a call of every export."""
    exports = set(re.findall(r"^  (\w+)$", definition.read_text(), re.MULTILINE)) - NOT_COMPARED
    called = set(re.findall(r"^(TORVIK\w+)\(", transcript, re.MULTILINE))
    if not exports or exports - called:
        raise Difference(f"exports that were not called: {sorted(exports - called)}")
    end = re.search(r"^end: (\d+) calls, (\d+) frames, (\d+) floating-point numbers\n\Z", transcript, re.MULTILINE)
    if end is None or any(int(count) < 1000 for count in end.groups()):
        raise Difference("the transcript is not complete")
    return len(exports), end.groups()


def compare(linux, windows, definition):
    """The figures of two runs that are alike."""
    names = [sorted(path.name for path in folder.iterdir()) for folder in (linux, windows)]
    if names[0] != names[1] or TRANSCRIPT not in names[0]:
        raise Difference(f"different files: {sorted(set(names[0]) ^ set(names[1]))}")
    texts = [name for name in names[0] if name != TRANSCRIPT]
    if all(name.startswith(TOOL_PREFIX) for name in texts):
        raise Difference("no response files")
    compare_file(linux / TRANSCRIPT, windows / TRANSCRIPT)
    exports, (calls, frames, numbers) = check_coverage((linux / TRANSCRIPT).read_text("latin-1"), definition)
    lines = sum(compare_file(linux / name, windows / name) for name in texts)
    return (f"{calls} calls of {exports} exports: {frames} frames and {numbers} floating-point numbers identical; "
            f"{len(texts)} other texts of {lines} lines identical")


def main():
    try:
        print(compare(*map(pathlib.Path, sys.argv[1:])))
    except (Difference, OSError) as difference:
        print(difference, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
