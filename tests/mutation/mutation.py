#!/usr/bin/python3
"""Changes the library's code in one place at a time and looks whether a test catches it: mutation.py BUILD_DIRECTORY [SHARE]

Every place of the files below where an operator, a number or a condition can be changed, or a statement deleted, gives one
mutant; SHARE (1 unless given) of them are tried, evenly spread. A mutant that does not compile does not count, one that
hangs is caught. Deleted locks are not among them: clang's thread-safety analysis rejects those in every build of the tests.
Ends with the score; exit code 1 below 90 %.
"""
import concurrent.futures
import functools
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
GOAL = 0.9
SLOWEST_FACTOR, SHORTEST_LIMIT = 10, 20  # a mutant hangs after so many times the unchanged program's time, or seconds

# File, and the test programs that look at it.
SUBJECTS = [
    ("core/wire.h", ["core"]),
    ("core/set_assembly.cpp", ["core"]),
    ("core/measured_values.cpp", ["core"]),
    ("core/buffer_bound.cpp", ["core"]),
    ("params/convert_from_device.cpp", ["params"]),
    ("core/transaction.cpp", ["core"]),
    ("core/call_gate.cpp", ["core"]),
    ("core/call_control.cpp", ["core"]),
    ("core/frame_counters.cpp", ["core"]),
    ("can/receive_thread.cpp", ["can"]),
    ("can/adapter_channel.cpp", ["can"]),
    ("calib/calibration_file.cpp", ["calibration_file"]),
    ("calib/ucf_parser.cpp", ["calibration_file"]),
    ("calib/number_syntax.cpp", ["calibration_file"]),
    ("filter/design_poles.cpp", ["filter"]),
    ("params/device_filters.cpp", ["filter_exports"]),
]
PROGRAMS = {"core": "tests/core/core_test", "can": "tests/can/can_test", "params": "tests/params/params_test", "filter": "tests/filter/filter_test",
            "calibration_file": "tests/calib/calibration_file_test",
            "filter_exports": "tests/filter/filter_exports_test"}
# A changed header is compiled into these; their copies of its functions come first when the tests are linked.
USERS = {"core/wire.h": ["core/set_assembly.cpp", "core/transaction.cpp", "params/convert_from_device.cpp"]}

# Patterns in the code and their replacements.
CHANGES = [
    (r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
    (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "), (r" \* (?=[\w(])", " / "),
    (r" << ", " >> "), (r" >> ", " << "), (r" & ", " | "), (r" \| ", " & "), (r"\+\+(?=\w)", "--"), (r"--(?=\w)", "++"),
    (r"\breturn true;", "return false;"), (r"\breturn false;", "return true;"),
    (r"\bif \((?=[\w.:>-]+(\(\))?\) )", "if (!"), (r"\bif \(!(?=[\w.:>-]+(\(\))?\) )", "if ("),
    (r"(?<![\w.'])(\d+)(?=[;,)\]} ])", lambda match: str(int(match[1]) + 1)),
]

# A statement of one line, also behind a condition, and what it must not be: a declaration, a result, a lock.
STATEMENT = re.compile(r"^(\s+(?:(?:else )?(?:if|for|while) \(.*\) |else )?)([\w:(*+-].*;)$")
NOT_DELETED = re.compile(r"return\b|const\b|[\w:<>,&*]+ +[*&]?\w+ *[({=;\[]|static_assert|[\w:<>, ]+ = default|for \(|if \(|else\b")
STATEMENT_ENDS = ("{", "}", ";", ")", ":", "else")

# Mutants that no test can catch, and why.
EQUIVALENT = {
    ("core/wire.h", "if (shift >= 54) return sign;"): "half of that unit is more than any number with its hidden bit",
    ("calib/ucf_parser.cpp", "if (end >= stringLimit) return std::nullopt;"): "a line has at most 127 characters",
    ("calib/number_syntax.cpp", "const std::size_t exponent = end + 1 + (end + 1 <= text.size() && isSign(text[end + 1]) ? 1 : 0);"):
        "an exponent without digits does not count, whatever stands behind the text",
    ("calib/number_syntax.cpp", "std::int64_t number = 1;"): "ten digits are always read into it",
    ("params/device_filters.cpp", "if (!isNan(coefficient) && std::abs(coefficient) <= 128.0)"):
        "128 becomes the largest either way",
    ("core/measured_values.cpp", "std::int32_t waiting = 1;"): "written by countValues before it is read",
    ("core/measured_values.cpp", "if (!countValues(record, 1, waiting)) return -1;"):
        "the least of all channels is taken afterwards",
    ("filter/design_poles.cpp", "candidates[index++] = fromLeft <= 0 ? conjugate(-opposite) : -opposite;"):
        "on the real axis a candidate is its own conjugate",
    ("filter/design_poles.cpp", "return Doubled(static_cast<double>(static_cast<std::int64_t>("
     "decimals * unit + (decimals <= 0 ? -0.5 : 0.5)))) /"): "0 is rounded to 0 from either side",
}


def code_lines(text):
    """Line number and line, where a change can matter: no includes, comments, assertions, hints, sizes or messages."""
    for number, line in enumerate(text.split("\n")):
        code = line.split("//")[0]
        if code.strip() and not code.startswith(("#", "namespace", "using")) and not any(
                word in code for word in ("static_assert", "__builtin_prefetch", "std::array<", '"')):
            yield number, code


def without_statement(code, before):
    """The line without its statement, or None; `before` is the line of code that precedes it."""
    match = STATEMENT.match(code.rstrip())
    if not match or NOT_DELETED.match(match[2]) or not before.endswith(STATEMENT_ENDS) or \
            any(code.count(left) != code.count(right) for left, right in ("()", "{}", "[]")):
        return None
    return match[1] + ";"


def mutants_of(path):
    """(line number, changed line) of every place that can be changed."""
    before = "{"
    for number, code in code_lines(path.read_text()):
        deleted = without_statement(code, before)
        before = code.strip()
        if deleted is not None:
            yield number, deleted
        for pattern, replacement in CHANGES:
            for match in re.finditer(pattern, code):
                changed = code[:match.start()] + re.sub(pattern, replacement, code[match.start():], count=1)
                if changed != code and "template" not in code:
                    yield number, changed


class Build:
    def __init__(self, directory):
        self.directory = directory
        self.environment = dict(os.environ, LD_LIBRARY_PATH=f"{directory}/virtual:{directory}")

    def compile(self, source, target, first, *options):
        """With what stands in `first` in the place of the library's own headers."""
        includes = [f"-I{folder}" for folder in (first, ROOT / "src", ROOT / "src/platform/linux", ROOT / "src/api")]
        command = ["g++", "-std=c++20", "-O1", "-w", "-fPIE", "-fno-gnu-unique", *options, *includes, "-c", source, "-o", target]
        return subprocess.run(command, capture_output=True, check=False).returncode == 0

    @functools.cache
    def link_command(self, program):
        """As the build links it."""
        commands = subprocess.run(["ninja", "-C", self.directory, "-t", "commands", PROGRAMS[program]],
                                  capture_output=True, text=True, check=True).stdout.strip().split("\n")
        return commands[-1].removeprefix(": && ").removesuffix(" && :")

    def link(self, program, changed, target):
        output = f"-o {PROGRAMS[program]}"
        compiler, _, rest = self.link_command(program).partition(" ")
        command = f"{compiler} {' '.join(changed)} {rest.replace(output, f'-o {target}')}"
        result = subprocess.run(command, shell=True, cwd=self.directory, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            sys.exit(f"{program} does not link: {result.stderr[-2000:]}")

    def run(self, program, limit):
        return subprocess.run([program, "--gtest_brief=1", "--gtest_fail_fast"], env=self.environment, cwd=os.path.dirname(program),
                              capture_output=True, timeout=limit, check=False).returncode

    @functools.cache
    def limit(self, name):
        """Seconds after which a mutant of this program hangs."""
        began = time.monotonic()
        if self.run(self.directory / PROGRAMS[name], None) != 0:
            sys.exit(f"{name} fails without any change")
        return max(SHORTEST_LIMIT, SLOWEST_FACTOR * (time.monotonic() - began))

    def passes(self, name, program):
        try:
            return self.run(program, self.limit(name)) == 0
        except subprocess.TimeoutExpired:
            return False

    def fate(self, subject, number, changed, programs):
        """The result of a mutant: "stillborn", "caught" or "SURVIVED"."""
        lines = (ROOT / "src" / subject).read_text().split("\n")
        if number is not None:
            lines[number] = changed
        with tempfile.TemporaryDirectory() as folder:
            changed_file, program = pathlib.Path(folder) / subject, f"{folder}/test"
            changed_file.parent.mkdir(parents=True)
            changed_file.write_text("\n".join(lines))
            objects = []
            options = ["-fno-inline", "-fkeep-inline-functions"] if subject in USERS else []
            for source in USERS.get(subject, [changed_file]):
                objects.append(f"{folder}/{len(objects)}.o")
                if not self.compile(ROOT / "src" / source, objects[-1], folder, *options):
                    return "stillborn"
            for name in programs:
                self.link(name, objects, program)
                if not self.passes(name, program):
                    return "caught"
        return "SURVIVED"


def main():
    build = Build(pathlib.Path(sys.argv[1]).resolve())
    share = float(sys.argv[2]) if len(sys.argv) > 2 else 1.0
    mutants = [(subject, number, changed, programs) for subject, programs in SUBJECTS
               for number, changed in mutants_of(ROOT / "src" / subject)]
    step = max(1, round(1 / share))
    tried = [mutant for mutant in mutants[step // 2::step] if (mutant[0], mutant[2].strip()) not in EQUIVALENT]
    for name in {name for _, _, _, programs in tried for name in programs}:
        build.limit(name)
    # Some tests wait more than they compute.
    with concurrent.futures.ThreadPoolExecutor(2 * os.cpu_count()) as pool:
        unchanged = {(subject, None, None, tuple(programs)) for subject, _, _, programs in tried}
        if set(pool.map(lambda mutant: build.fate(*mutant), unchanged)) != {"SURVIVED"}:
            sys.exit("the tests fail without any change")
        fates = list(pool.map(lambda mutant: build.fate(*mutant), tried))
    for (subject, number, changed, _), fate in zip(tried, fates):
        if fate == "SURVIVED":
            print(f"survived: src/{subject}:{number + 1}: {changed.strip()}")
    caught, survived = fates.count("caught"), fates.count("SURVIVED")
    score = caught / max(1, caught + survived)
    print(f"{len(tried)} of {len(mutants)} mutants, {fates.count('stillborn')} stillborn, {caught} caught, {survived} survived:"
          f" {100 * score:.1f} %")
    return 0 if caught > 0 and score >= GOAL else 1


if __name__ == "__main__":
    sys.exit(main())
