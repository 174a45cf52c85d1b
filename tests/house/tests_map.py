#!/usr/bin/env python3
"""Checks that a test is found by its name. usage: tests_map.py ROOT

A suite bears the name of its file, and includes are written from the root: "support/X.h" for a file of
tests/, "webview/X.h" for one of the library. Prints one line for each exception and exits 1 if there is any.
"""

import re
import sys
from pathlib import Path

SUITE = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+)\s*,")
# The suites of the tools are still named after what they test.
OTHER_SUITES = Path("tests/tools")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')


def fault(root, path, line):
    suite = SUITE.match(line)
    if suite and suite[1] != path.stem and OTHER_SUITES not in path.parents:
        return f"the suite of this file is {path.stem}"
    include = INCLUDE.match(line)
    if include and not is_from_the_root(root, include[1]):
        return "no such file under tests/, include/ or the root"
    return None


def is_from_the_root(root, name):
    folders = (root / "tests", root, root / "include")
    return ".." not in Path(name).parts and any((folder / name).is_file() for folder in folders)


def faults(root):
    for path in sorted((root / "tests").rglob("*")):
        if path.suffix in (".h", ".cpp"):
            for number, line in enumerate(path.read_text().splitlines(), 1):
                what = fault(root, path.relative_to(root), line)
                if what:
                    yield f"{path.relative_to(root)}:{number}: {line.strip()}: {what}"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "every suite bears its file's name")
    sys.exit(1 if found else 0)
