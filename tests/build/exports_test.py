#!/usr/bin/env python3
"""The shared libraries export what the public headers mark, and nothing else of their own.
usage: exports_test.py ROOT LIBRARY...
"""

import re
import subprocess
import sys
from pathlib import Path

MARKED = re.compile(r"(?:class|struct) QORIX_EXPORT (?:\[\[nodiscard\]\] )?(\w+)|"
                    r"^QORIX_EXPORT (?:extern )?[^;{(]*?(\w+)(?:\(|\[\]|;)", re.MULTILINE)
# GLib's macro for a class declares this function first.
CLASS = re.compile(r"^QORIX_EXPORT\s+G_DECLARE_FINAL_TYPE\(\w+, (\w+),", re.MULTILINE)
OWN = re.compile(r"^(?:(?:vtable|typeinfo|typeinfo name|VTT|construction vtable) for |"
                 r"(?:non-virtual|virtual) thunk to )?qorix::(?:gtk::)?(?:\w+ )?(\w+)")


def marked(root):
    """The names that the public headers mark."""
    for header in sorted((root / "include").rglob("*.h")):
        text = header.read_text()
        for names in MARKED.findall(text):
            yield from filter(None, names)
        for name in CLASS.findall(text):
            yield f"{name}_get_type"


def exported(library):
    """The exported symbols as the source spells them, without the name of their version."""
    lines = subprocess.run(["nm", "-D", "-C", "--defined-only", library],
                           check=True, capture_output=True, text=True).stdout.splitlines()
    symbols = [line.split(" ", 2)[2].partition("@@") for line in lines]
    return [name for name, _, version in symbols if version]


def main():
    public = set(marked(Path(sys.argv[1])))
    faults, found = [], set()
    for library in sys.argv[2:]:
        for symbol in exported(library):
            own = OWN.match(symbol)
            name = own[1] if own else symbol
            if name not in public:
                faults.append(f"{Path(library).name} exports {symbol}")
            found.add(name)
    faults += [f"{name} is marked, but not exported" for name in
               ("MyPushAdManager", "MyPushAdEvent", "install", "viewForOverlay", "platform",
                "QORIXVersionString", "QORIXVersionNumber") if name not in found & public]
    print("\n".join(faults) or f"{len(public)} names are public")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
