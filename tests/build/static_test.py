#!/usr/bin/env python3
"""Builds the libraries as static ones, installs them where the system wants them, and builds hosts
with them. usage: static_test.py CMAKE ROOT
"""

import subprocess
import sys
import tempfile
from pathlib import Path

CMAKE, ROOT = sys.argv[1], Path(sys.argv[2])
# The folder of this machine's libraries, where CMake looks, too.
LIBRARIES = "lib/" + subprocess.run(["gcc", "-print-multiarch"], check=True, capture_output=True,
                                    text=True).stdout.strip()
# Optimising, or compiling each source alone, would add time only.
OPTIONS = ["BUILD_SHARED_LIBS=OFF", "CMAKE_BUILD_TYPE=Debug", "CMAKE_UNITY_BUILD=ON",
           "QORIX_BUILD_TESTS=OFF", "QORIX_BUILD_EXAMPLES=OFF", "QORIX_BUILD_TOOLS=OFF",
           f"CMAKE_INSTALL_LIBDIR={LIBRARIES}", "CMAKE_INSTALL_INCLUDEDIR=headers"]


def run(*command):
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{command} failed:\n{result.stdout[-3000:]}\n{result.stderr[-3000:]}")


def missing(prefix):
    for file in (f"{LIBRARIES}/libqorix.a", f"{LIBRARIES}/libqorix-gtk3.a",
                 f"{LIBRARIES}/qorix-gtk3-2/qorix-webprocess.so",
                 "headers/qorix-2/qorix/gtk3.h"):
        if not (prefix / file).is_file():
            yield f"{file} is not installed"
    for file in prefix.rglob("libqorix*.so*"):
        yield f"{file} is installed, too"


def main():
    with tempfile.TemporaryDirectory(prefix="qorix-static-") as temporary:
        build, prefix = Path(temporary, "build"), Path(temporary, "prefix")
        options = [f"-D{option}" for option in [*OPTIONS, f"CMAKE_INSTALL_PREFIX={prefix}"]]
        run(CMAKE, "-G", "Ninja", "-S", ROOT, "-B", build, *options)
        run(CMAKE, "--build", build)
        run(CMAKE, "--install", build)
        faults = list(missing(prefix))
        if not faults:
            hosts = ROOT / "tests/package/hosts_test.py"
            run(sys.executable, "-B", hosts, "--prefix", prefix, "--static")
    print("\n".join(faults) or "hosts work with the static libraries")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
