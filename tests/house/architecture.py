#!/usr/bin/env python3
"""Checks that docs/architecture.md lists the rooms as rooms.txt does. usage: architecture.py ROOT

Prints one line for each room whose row in the table of rooms is missing or wrong and exits 1 if there is
any. The table has the highest room first.
"""

import re
import sys
from pathlib import Path

from rooms import Rooms

ROW = re.compile(r"^\| `([a-z/]+)/` \|([^|]*)\|[^|]+\|$", re.MULTILINE)


def faults(root):
    rooms = Rooms(root)
    rows = [(room, re.findall(r"`([a-z/]+)/`", knows))
            for room, knows in ROW.findall((root / "docs/architecture.md").read_text())]
    for room, knows in rows:
        if room not in rooms.listed:
            yield f"docs/architecture.md: there is no room {room}"
        elif knows != rooms.listed[room]:
            yield f"docs/architecture.md: {room} knows {', '.join(rooms.listed[room]) or 'no room'}"
    for room in rooms.listed.keys() - dict(rows).keys():
        yield f"docs/architecture.md: {room} is missing"
    order = [room for room, _ in rows if room in rooms.listed]
    if order != [room for room in reversed(rooms.listed) if room in order]:
        yield "docs/architecture.md: the rooms stand in another order than in rooms.txt"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "the table of rooms is true")
    sys.exit(1 if found else 0)
