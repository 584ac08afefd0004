#!/usr/bin/env python3
"""deliberate.py [-l] [TOP] - the deliberate behaviours that are listed, and the tests they name.

    GOAL C3 <found>/<listed> all PASS|FAIL

A behaviour is a row of a table of docs/compatibility.md with the columns what, where, why it stays
and test. It is found when its last column names tests, and all of them are in the sources or among
those that CMake adds. The other way round every test called deliberate... has to be in a table.

Standard error has what is missing; with -l also what is there. A table that is not understood is an
error: exit status 2.
"""

import re
import sys
from pathlib import Path

COLUMNS = ["what", "where", "why it stays", "test"]
OTHER_COLUMNS = ["when", "then"]  # what happens where nothing was promised
# Where a test begins. What is no code for the compiler is none here.
TEST = re.compile(r"^(?:TYPED_TEST(?:_P)?|TEST(?:_F|_P)?)\(\s*(\w+),\s*(\w+)\)", re.MULTILINE)
NO_CODE = re.compile(r"/\*.*?\*/|^#if 0$.*?^#endif$", re.DOTALL | re.MULTILINE)


class NotUnderstood(Exception):
    pass


def cells(line):
    """The cells of a table's row; a bar may stand in one behind a backslash."""
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip())[1:-1]]


def rows_of(document):
    """The behaviours that are listed: line, what, and the last column."""
    columns = None
    for number, line in enumerate(document.splitlines(), 1):
        if not line.startswith("|"):
            columns = None
        elif columns is None:
            columns = cells(line)
            if columns not in (COLUMNS, OTHER_COLUMNS):
                raise NotUnderstood(f"line {number}: a table of {', '.join(columns)}")
        elif not re.fullmatch(r"[|\-: ]+", line):
            row = cells(line)
            if len(row) != len(columns):
                raise NotUnderstood(f"line {number}: {len(row)} cells for {len(columns)} columns")
            if columns == COLUMNS:
                yield number, row[0], row[-1]


def tests_of(folder):
    """The tests in the sources as suite.test, and those that CMake adds by their names."""
    found = set()
    for path in sorted(folder.rglob("*")):
        if path.suffix in (".cpp", ".h"):
            tests = TEST.findall(NO_CODE.sub("", path.read_text()))
            found |= {f"{suite}.{test}" for suite, test in tests}
        elif path.name == "CMakeLists.txt":
            found |= set(re.findall(r"add_test\(NAME (\w+)", path.read_text()))
    return found


def main(arguments):
    isLong = arguments[:1] == ["-l"]
    rest = arguments[isLong:]
    top = Path(rest[0]) if rest else Path(__file__).resolve().parents[2]
    tests = tests_of(top / "tests")
    listed = found = 0
    named = set()
    for number, what, last in rows_of((top / "docs/compatibility.md").read_text()):
        listed += 1
        names = re.findall(r"`([\w.]+)`", last)
        named |= set(names)
        missing = [name for name in names if name not in tests]
        found += bool(names) and not missing
        if missing or not names:
            why = "no " + ", ".join(missing) if names else "no test is named"
            print(f"not found: docs/compatibility.md:{number}: {what} ({why})", file=sys.stderr)
        elif isLong:
            print(f"found: {number}: {what} {' '.join(names)}", file=sys.stderr)
    unlisted = sorted(t for t in tests if ".deliberate" in t and t not in named)
    for test in unlisted:
        print(f"not listed: {test}", file=sys.stderr)
    isReached = found == listed and listed != 0 and not unlisted
    print(f"GOAL C3 {found}/{listed} all {'PASS' if isReached else 'FAIL'}")
    return 0 if isReached else 1


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except NotUnderstood as error:
        print(f"deliberate.py: docs/compatibility.md: {error}", file=sys.stderr)
        sys.exit(2)
