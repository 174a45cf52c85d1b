#!/usr/bin/env python3
"""Checks that the guide for hosts shows what is built. usage: blocks_test.py ROOT

The opening line of a block names the file that the block is from. Build files are shown whole; of a C++
source consecutive lines are. Blocks that name no file must be of a kind that another test compiles or
runs.
"""

import re
import sys
from pathlib import Path

BLOCK = re.compile(r"^```(.+)\n((?:.*\n)*?)```$", re.MULTILINE)
TESTED_ELSEWHERE = ("cpp", "console")  # HostGuideCodeTest compiles and runs these
CONSUMERS = Path("tests/package/consumers")


def fault(root, opening, block):
    """What is wrong with a block, or None."""
    if opening in TESTED_ELSEWHERE:
        return None
    name = opening.partition(" ")[2]
    if not name or not (root / name).is_file():
        return "is neither from a file nor tested"
    text = (root / name).read_text()
    if name.endswith(".cpp"):
        return None if f"\n{block}" in text else f"is not in {name}"
    return None if block == text else f"differs from {name}"


def faults(root):
    blocks = BLOCK.findall((root / "docs/hosts.md").read_text())
    for opening, block in blocks:
        what = fault(root, opening, block)
        if what:
            yield f"docs/hosts.md: the block \"{opening}\" {what}"
    shown = {opening.partition(" ")[2] for opening, _ in blocks}
    for folder in sorted(filter(Path.is_dir, (root / CONSUMERS).iterdir())):
        for file in folder.iterdir():
            if str(file.relative_to(root)) not in shown:
                yield f"docs/hosts.md does not show {file.relative_to(root)}"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "the guide shows what is built")
    sys.exit(1 if found else 0)
