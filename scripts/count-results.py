#!/usr/bin/python3
"""Counts the results of a ctest run: count-results.py BUILD_DIRECTORY FAILURES_FILE

Prints "passed failed skipped". A GoogleTest program counts by the cases in its report (results/NAME.xml), any other test
as one, and its skipped cases beside it when it is a Python unittest. A program without a report, or one that fails without a failed case in its report (a crash, a time-out, a
sanitizer's finding), counts as one failure more. The names of what failed go to FAILURES_FILE.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree


def count_cases(report):
    passed, failed, skipped = 0, [], 0
    for case in ElementTree.parse(report).iter("testcase"):
        if case.find("failure") is not None:
            failed.append(f"{case.get('classname')}.{case.get('name')}")
        elif case.get("status") != "run" or case.get("result") == "skipped":
            skipped += 1
        else:
            passed += 1
    return passed, failed, skipped


def skipped_cases(test):
    """The skipped and all cases of a Python unittest, whose last line tells them."""
    output = test.findtext("system-out") or ""
    ran = re.findall(r"^Ran (\d+) tests? in ", output, re.MULTILINE)
    skipped = re.findall(r"^OK \(.*\bskipped=(\d+)", output, re.MULTILINE)
    return (int(skipped[-1]), int(ran[-1])) if ran and skipped else (0, 1)


def is_skipped(test):
    """Whether a test was left out on purpose. One whose program or file is missing was not."""
    reason = test.find("skipped")
    wanted = reason is not None and reason.get("message", "").startswith("SKIP_")
    return test.get("status") == "disabled" or test.get("status") == "notrun" and wanted


def main():
    directory = pathlib.Path(sys.argv[1])
    passed, failed, skipped = 0, [], 0
    for test in ElementTree.parse(directory / "ctest.xml").iter("testcase"):
        name = test.get("name")
        went_well = test.get("status") == "run"
        report = directory / "results" / f"{name}.xml"
        if not report.exists():
            if is_skipped(test):
                skipped += 1
            elif went_well and not (directory / "googletest-programs" / name).exists():
                cases_skipped, cases = skipped_cases(test)
                skipped += cases_skipped
                passed += cases_skipped < cases
            else:
                failed.append(name)
            continue
        case_passed, case_failed, case_skipped = count_cases(report)
        passed += case_passed
        skipped += case_skipped
        failed += [f"{name}: {case}" for case in case_failed]
        if not went_well and not case_failed:
            failed.append(f"{name} as a whole")
    pathlib.Path(sys.argv[2]).write_text("".join(f"{name}\n" for name in failed))
    print(passed, len(failed), skipped)


if __name__ == "__main__":
    main()
