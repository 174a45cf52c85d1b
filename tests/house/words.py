#!/usr/bin/env python3
"""Checks the words that the tree must not hold. usage: words.py ROOT

The tree stands on its own: it neither mentions the papers that it was planned with nor holds marks of
unfinished or switched-off work. Prints one line for each place and exits 1 if there is any.
"""

import os
import re
import sys
from pathlib import Path

# Written with classes of one letter so that this file does not find itself.
PAPERS = re.compile(
    r"\bpart[ _-]?[1-5][._-][1-3](?![0-9])|\bspec[.]md\b|\bthe[ ]specification\b|\bDEVELOPERS[.]md\b|"
    r"\bshared/(spec|design|anchors)|\bissue[ ]#?[0-9]+\b",
    re.IGNORECASE,
)
MARKS = re.compile(r"\b(T[O]DO|F[I]XME|X[X]X|H[A]CK)\b|DISABLED[_][A-Z]|GTEST[_]SKIP")


def files(root):
    for folder, names, files_here in os.walk(root):
        at_top = Path(folder) == Path(root)
        names[:] = sorted(
            n
            for n in names
            if n not in (".git", "__pycache__") and not (at_top and n.startswith("build"))
        )
        for name in sorted(files_here):
            yield Path(folder) / name


def faults(root):
    for path in files(root):
        relative = path.relative_to(root)
        if PAPERS.search(str(relative)):
            yield f"{relative}: its name"
        try:
            lines = path.read_text().splitlines()
        except (UnicodeDecodeError, OSError):  # a picture, a socket
            continue
        for number, line in enumerate(lines, 1):
            if PAPERS.search(line) or MARKS.search(line):
                yield f"{relative}:{number}: {line.strip()}"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "no such word")
    sys.exit(1 if found else 0)
