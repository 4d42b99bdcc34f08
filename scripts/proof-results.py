#!/usr/bin/python3
"""Enters one proof's result into docs/proof-results.md: proof-results.py NAME passed|failed SECONDS LOG COMMAND...

LOG is what the proof printed; its last lines, without GoogleTest's own, are the figures. A proof has one section, which a
later run replaces. Two runs at once wait for each other.
"""
import datetime
import fcntl
import os
import pathlib
import platform
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
RESULTS = ROOT / "docs" / "proof-results.md"
FIGURE_LINES = 16
HEADING = """# Proof results

Written by `scripts/prove.sh`, one section for each proof at full size; [proof.md](proof.md) describes the methods and their limits.
"""


def commit():
    """The commit that was proved, marked when the working copy differs from it."""
    def git(*arguments):
        return subprocess.run(["git", "-C", ROOT, *arguments], capture_output=True, text=True, check=True).stdout.strip()
    changed = git("status", "--porcelain", "--", ".", f":!{RESULTS.relative_to(ROOT)}")
    return git("rev-parse", "--short=12", "HEAD") + (" with uncommitted changes" if changed else "")


def machine():
    model = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"), re.MULTILINE)
    return f"{os.cpu_count()} x {model[1] if model else platform.machine()}, Linux {'.'.join(platform.release().split('.')[:2])}"


def figures(log):
    """The last lines that a proof printed itself."""
    def is_figure(line):
        return line.strip() and not re.match(r"\[[ =\-A-Z]+\]|Running main|Note: |\d+ FAILED|== ", line)
    lines = [line.rstrip().replace(str(ROOT) + "/", "") for line in log.read_text(errors="replace").splitlines()]
    return [line for line in lines if is_figure(line)][-FIGURE_LINES:] or ["(prints nothing)"]


def section(name, result, seconds, log, command):
    facts = [("Result", f"{result} in {seconds} s"), ("Command", f"`{command.replace(str(ROOT) + '/', '')}`"),
             ("Commit", commit()), ("Machine", machine()), ("Date", datetime.date.today().isoformat())]
    return (f"## {name}\n\n" + "".join(f"- {key}: {value}\n" for key, value in facts) +
            "\n```\n" + "\n".join(figures(log)) + "\n```\n")


def enter(name, text):
    with open(RESULTS, "a+", encoding="utf-8") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        file.seek(0)
        found = re.findall(r"^## (\S+)\n(.*?)(?=^## \S+\n|\Z)", file.read(), re.MULTILINE | re.DOTALL)
        sections = {other: f"## {other}\n{body.rstrip()}\n" for other, body in found}
        sections[name] = text
        file.seek(0)
        file.truncate()
        file.write("\n".join([HEADING, *sections.values()]))


def main():
    name, result, seconds, log, *command = sys.argv[1:]
    enter(name, section(name, result, seconds, pathlib.Path(log), " ".join(command)))


if __name__ == "__main__":
    main()
