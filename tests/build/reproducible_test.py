#!/usr/bin/env python3
"""Builds the libraries twice and compares them. usage: reproducible_test.py CMAKE ROOT

Once from the tree itself, beside it, and once from a copy of it elsewhere, inside it; without a
compiler cache. With one SOURCE_DATE_EPOCH the results must be the same to the byte. Whatever would
make the second one anew must renew the time that is stamped into it.
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

LIBRARIES = ("libqorix.so", "libqorix-gtk3.so")
STAMP = b"Jan  5 2024\x00"  # of the time below
ENVIRONMENT = {**os.environ, "SOURCE_DATE_EPOCH": "1704447667", "CCACHE_DISABLE": "1"}


def run(command, environment=ENVIRONMENT):
    result = subprocess.run(command, env=environment, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{command} failed:\n{result.stdout[-3000:]}\n{result.stderr[-3000:]}")
    return result.stdout


def configure(cmake, source, folder, environment=ENVIRONMENT, more=()):
    # Optimising, or compiling each source alone, would add time only.
    options = ["-G", "Ninja", "-D", "CMAKE_BUILD_TYPE=Debug", "-D", "CMAKE_UNITY_BUILD=ON"]
    for part in ("TESTS", "EXAMPLES", "TOOLS", "INTROSPECTION"):
        options += ["-D", f"QORIX_BUILD_{part}=OFF"]
    run([cmake, "-S", source, "-B", folder, *options, *more], environment)


def stamp_with_the_clock(cmake, source, folder):
    """Leaves a folder in which an ordinary build has already stamped its time."""
    ordinary = {k: v for k, v in ENVIRONMENT.items() if k != "SOURCE_DATE_EPOCH"}
    configure(cmake, source, folder, ordinary)
    run([cmake, "--build", folder, "--target", "BuildStamp.cpp"], ordinary)


def build(cmake, source, folder):
    """Builds `source` in `folder` and returns the bytes of the libraries."""
    configure(cmake, source, folder)
    run([cmake, "--build", folder])
    return {name: (folder / "lib" / name).read_bytes() for name in LIBRARIES}


def renewal_faults(cmake, source, folder):
    """Asks what would be made anew in `folder`, where all is built, if something were changed."""

    def would_stamp():
        return "Generating BuildStamp.cpp" in run([cmake, "--build", folder, "--", "-n"])

    if would_stamp():
        yield "the stamp is renewed though nothing has changed"
    for name in ("text/Excerpt.cpp", "text/Excerpt.h", "include/qorix/MyPushAdInfo.h"):
        before = (source / name).stat()
        os.utime(source / name)
        if not would_stamp():
            yield f"a change of {name} does not renew the stamp"
        os.utime(source / name, ns=(before.st_atime_ns, before.st_mtime_ns))
    for flags in ("CMAKE_CXX_FLAGS=-DQORIX_CHANGED", "CMAKE_SHARED_LINKER_FLAGS=-Wl,-z,now"):
        configure(cmake, source, folder, more=["-D", flags])
        if not would_stamp():
            yield f"{flags} does not renew the stamp"
        configure(cmake, source, folder, more=["-D", flags.partition("=")[0] + "="])


def main():
    cmake, root = sys.argv[1], Path(sys.argv[2])
    with tempfile.TemporaryDirectory(prefix="qorix-reproducible-") as temporary:
        copy = Path(temporary) / "a copy" / "of the tree"
        ignored = shutil.ignore_patterns("build*", ".git", "__pycache__")
        shutil.copytree(root, copy, ignore=lambda folder, names: (
            ignored(folder, names) if Path(folder) == root else set()))
        first = build(cmake, root, Path(temporary) / "first")
        stamp_with_the_clock(cmake, copy, copy / "out")
        second = build(cmake, copy, copy / "out")
        renewed = list(renewal_faults(cmake, copy, copy / "out"))
    faults = [f"{name} differs" for name in LIBRARIES if first[name] != second[name]]
    if STAMP not in first[LIBRARIES[0]]:
        faults.append("the time that was given is not in the library")
    faults += renewed
    print("\n".join(faults) or f"{', '.join(LIBRARIES)}: the same {sum(map(len, first.values()))} bytes")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
