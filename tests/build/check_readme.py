"""The README's C example is the example that the tests compile and run: check_readme.py README EXAMPLE"""
import pathlib
import re
import sys

readme, example = (pathlib.Path(path).read_text(encoding="utf-8") for path in sys.argv[1:3])
blocks = re.findall(r"^```c\n(.*?)^```$", readme, re.MULTILINE | re.DOTALL)
if blocks != [example]:
    sys.exit(f"{len(blocks)} C blocks in {sys.argv[1]}; it has to show {sys.argv[2]} and nothing else in C")
