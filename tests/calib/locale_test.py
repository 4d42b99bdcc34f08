#!/usr/bin/python3
"""Runs a program's tests again in a locale with a decimal comma: locale_test.py PROGRAM

The locale is made with localedef in a folder of its own, so that none has to be installed. On a system without localedef
or its sources the check fails: it is not to pass unnoticed.
"""
import os
import subprocess
import sys
import tempfile

with tempfile.TemporaryDirectory() as folder:
    name = "de_DE.UTF-8"
    subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", os.path.join(folder, name)], check=True)
    environment = os.environ | {"LOCPATH": folder, "TORVIK_TEST_LOCALE": name}
    environment.pop("GTEST_OUTPUT", None)
    sys.exit(subprocess.run([sys.argv[1]], env=environment).returncode)
