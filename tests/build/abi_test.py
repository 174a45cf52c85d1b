#!/usr/bin/env python3
"""The binary interface of the shared libraries is the one that abi/ keeps.
usage: abi_test.py [--renew] ROOT LIBRARY...

abi/ has two files for each soname: the exported symbols, and abidw's description of the types
behind them. With --renew they are written anew.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

# abidiff's exit status has a bit for each.
CHANGED, INCOMPATIBLE = 4, 8


def output(command, allowed=(0,)):
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode not in allowed:
        sys.exit(f"{command} failed:\n{result.stdout}{result.stderr}")
    return result.stdout


def soname(library):
    for line in output(["objdump", "-p", library]).splitlines():
        if "SONAME" in line:
            return line.split()[-1]
    sys.exit(f"{library} has no soname")


def symbols(library):
    """The exported symbols as the source spells them, one per line."""
    lines = output(["nm", "-D", "-C", "--defined-only", "--with-symbol-versions", library]).splitlines()
    return "".join(sorted({line.split(" ", 2)[2] + "\n" for line in lines}))


def description(root, library):
    """The types behind them, with nothing that another folder or compiler cache would change."""
    return output(["abidw", "--headers-dir", root / "include", "--exported-interfaces-only",
                   "--drop-private-types", "--no-show-locs", "--no-corpus-path", "--no-comp-dir-path",
                   "--no-elf-needed", library])


def faults(root, library, name):
    kept = (root / f"abi/{name}.symbols").read_text()
    gone = set(kept.splitlines()) - set(symbols(library).splitlines())
    new = set(symbols(library).splitlines()) - set(kept.splitlines())
    yield from (f"{name} no longer exports {symbol}" for symbol in sorted(gone))
    yield from (f"{name} now exports {symbol}" for symbol in sorted(new))
    with tempfile.NamedTemporaryFile("w", suffix=".abi") as now:
        now.write(description(root, library))
        now.flush()
        result = subprocess.run(["abidiff", root / f"abi/{name}.abi", now.name],
                                capture_output=True, text=True)
    if result.returncode & ~(CHANGED | INCOMPATIBLE):
        yield f"abidiff failed: {result.stdout}{result.stderr}"
    elif result.returncode:
        yield result.stdout
    if gone or result.returncode & INCOMPATIBLE:
        yield f"{name}: hosts that are built would break: QORIX_ABI must grow"
    elif new or result.returncode:
        yield (f"{name}: hosts that are built may go on, if nothing above changes a class's size or "
               "its virtual functions: `./run abi` keeps the new interface")


def main():
    arguments = [a for a in sys.argv[1:] if a != "--renew"]
    root, libraries = Path(arguments[0]), arguments[1:]
    found = []
    for library in libraries:
        name = soname(library)
        if "--renew" in sys.argv:
            (root / f"abi/{name}.symbols").write_text(symbols(library))
            (root / f"abi/{name}.abi").write_text(description(root, library))
        found += faults(root, library, name)
    print("\n".join(found) or f"{len(libraries)} libraries have the interface that abi/ keeps")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
