"""The documentation's error codes are the library's rows, in their order: check_error_codes.py DOCUMENT ERROR_TABLE"""
import pathlib
import re
import sys

document, source = (pathlib.Path(path).read_text(encoding="utf-8") for path in sys.argv[1:3])
entries = re.findall(r'ErrorRow\{(\w+), (0x[0-9A-F]+), "(.*)"\}', source)
last = {code: row for row, (_, code, _) in enumerate(entries)}
expected = [f'| {code} | {kind} | "{text}" | {"yes" if last[code] == row else "no"} |'
            for row, (kind, code, text) in enumerate(entries)]
found = re.findall(r"^\| 0x.*$", document, re.MULTILINE)

# Every row of the source has to be one that the pattern takes.
rows = source.count("ErrorRow{")
if not rows or len(entries) != rows:
    sys.exit(f"{len(entries)} of {rows} rows of {sys.argv[2]} can be read")
for row in range(max(len(found), rows)):
    pair = [lines[row] if row < len(lines) else "nothing" for lines in (found, expected)]
    if pair[0] != pair[1]:
        sys.exit(f"row {row + 1} of {sys.argv[1]}: {pair[0]}\nthe library has:    {pair[1]}")
