#!/usr/bin/env python3
"""Checks that the build compiles every source. usage: every_test_is_built.py ROOT BUILD

A source that nobody builds rots unseen. Prints one line for each .cpp of the rooms that BUILD's
compile_commands.json lacks and exits 1 if there is any. A source may be compiled in a group, by a file
that includes it. Benchmarks and fuzzers are only built on demand: where they are not, their CMakeLists.txt
must name them.
"""

import json
import os
import re
import sys
from pathlib import Path

from rooms import Rooms

ON_DEMAND = ("bench", "tests/fuzz")
GROUP = re.compile(r"/unity_\d+_cxx\.cxx$")


def compiled(build):
    """The sources that the compiler is called with, or that a group of sources includes."""
    for command in json.loads((build / "compile_commands.json").read_text()):
        file = os.path.join(command["directory"], command["file"])
        yield os.path.realpath(file)
        if GROUP.search(file):
            for source in re.findall(r'^#include "(.*)"$', Path(file).read_text(), re.MULTILINE):
                yield os.path.realpath(source)


def faults(root, build):
    built = set(compiled(build))
    for path in Rooms(root).sources((".cpp",)):
        if os.path.realpath(root / path) in built:
            continue
        if is_named(root, path):
            continue
        yield f"{path}: no target builds it"


def is_named(root, path):
    """Whether it is built on demand, and the list of its folder names it."""
    for folder in ON_DEMAND:
        lists = root / folder / "CMakeLists.txt"
        if path.is_relative_to(folder) and lists.is_file():
            return str(path.relative_to(folder)) in lists.read_text()
    return False


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1]), Path(sys.argv[2])))
    print("\n".join(found) or "every source is built")
    sys.exit(1 if found else 0)
