#!/usr/bin/env python3
"""Checks that the tests named in docs/testing.md and docs/reliability.md exist. usage: promises.py ROOT

Prints one line for each name that no test has and exits 1 if there is any.
"""

import re
import sys
from pathlib import Path

TEST = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)|"
                  r"NAME (build|docs|examples|house|tools)\.([\w-]*)|"
                  r"^qorix_(?:add|try)_(bench)\((\w[\w-]*)", re.MULTILINE)


def tests(root):
    """Every test as "Suite.name"."""
    for path in sorted([*(root / "tests").rglob("*"), root / "bench" / "CMakeLists.txt"]):
        if path.name == "CMakeLists.txt" or path.suffix == ".cpp":
            for suite, name, group, script, bench, program in TEST.findall(path.read_text()):
                yield f"{suite or group or bench}.{name or script or program}"


def faults(root):
    known = list(tests(root))
    for guide in ("docs/testing.md", "docs/reliability.md"):
        yield from faults_of(guide, (root / guide).read_text(), known)


def faults_of(guide, text, known):
    for row in re.findall(r"^\|.*\|([^|]+)\|$", text, re.MULTILINE):
        for named in re.findall(r"`([^`]+)`", row):
            # "…" stands for any letters; a suite stands for all of its tests.
            pattern = ".*".join(re.escape(part) for part in named.split("…")) + r"(\..*)?"
            if not any(re.fullmatch(pattern, test) for test in known):
                yield f"{guide}: no test is named {named}"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "every test that is named exists")
    sys.exit(1 if found else 0)
