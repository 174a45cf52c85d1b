#!/usr/bin/env python3
"""Checks that each using-declaration is used. usage: using_declarations.py ROOT

Prints one line for each name that a source declares and does not mention again, and exits 1 if there
is any.
"""

import re
import sys
from pathlib import Path

DECLARATION = re.compile(r"^[ ]*using (?:\w*::)+(\w+);", re.MULTILINE)


def faults(root):
    for path in sorted(root.rglob("*.cpp")):
        relative = path.relative_to(root)
        if not relative.parts[0].startswith("build"):
            text = path.read_text()
            for match in DECLARATION.finditer(text):
                if len(re.findall(rf"\b{match[1]}\b", text)) == 1:
                    line = text.count("\n", 0, match.start()) + 1
                    yield f"{relative}:{line}: {match[1]} is not used"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "every name that is declared is used")
    sys.exit(1 if found else 0)
