#!/usr/bin/env python3
"""A project that includes this one gets the two libraries and keeps its own ways.
usage: guest_test.py CMAKE ROOT

Only configures, and compiles one source; what a guest can include and link is tested elsewhere.
"""

import json
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, ROOT = (sys.argv.pop(1) for _ in range(2))

PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(guest LANGUAGES CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
add_subdirectory({root} qorix)
add_executable(guest guest.cpp)
target_link_libraries(guest PRIVATE qorix::gtk3 qorix::qorix)
if(NOT "${{CMAKE_CXX_STANDARD}}${{CMAKE_BUILD_TYPE}}${{BUILD_SHARED_LIBS}}" STREQUAL "")
  message(FATAL_ERROR "the guest's own settings were changed")
endif()
"""


def configure(guest, *options):
    """Configures the project in `guest` and returns the commands that compile its sources."""
    plain = {k: v for k, v in os.environ.items() if k not in ("CXXFLAGS", "CMAKE_BUILD_TYPE")}
    result = subprocess.run([CMAKE, "-G", "Ninja", "-S", guest, "-B", guest / "out", *options],
                            env=plain, capture_output=True, text=True)
    if result.returncode != 0:
        raise AssertionError(result.stdout + result.stderr)
    return json.loads((guest / "out/compile_commands.json").read_text())


class Guest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        guest = Path(folder.name)
        (guest / "guest.cpp").write_text("int main() {}\n")
        (guest / "CMakeLists.txt").write_text(PROJECT.format(root=ROOT))
        commands = configure(guest)
        cls.commands = {Path(c["file"]): c["command"] for c in commands}
        cls.own = next(c for f, c in cls.commands.items() if f.name == "guest.cpp")

    def test_only_the_libraries_are_built(self):
        others = [f for f in self.commands
                  if set(f.parts) & {"tests", "tools", "examples", "bench"} and str(f).startswith(ROOT)]
        self.assertEqual(others, [])
        self.assertIn(Path(ROOT) / "manager/MyPushAdManager.cpp", self.commands)

    def test_the_guest_is_compiled_its_own_way(self):
        for flag in ("-Wall", "-Werror", "-fvisibility"):
            self.assertNotIn(flag, self.own)

    def test_the_guest_gets_the_public_headers_and_cxx20(self):
        self.assertIn(f"-I{ROOT}/include", self.own)
        self.assertNotIn(f"-I{ROOT} ", self.own)
        self.assertRegex(self.own, r"-std=(c|gnu)\+\+20")

    def test_a_warning_does_not_end_a_guests_build(self):
        self.assertEqual([f for f, c in self.commands.items() if "-Werror" in c], [])


class GuideForHosts(unittest.TestCase):
    def test_the_guides_project_with_the_sources_compiles(self):
        with tempfile.TemporaryDirectory() as folder:
            guest = Path(folder)
            consumers = Path(ROOT) / "tests/package/consumers"
            shutil.copy(consumers / "subdirectory/CMakeLists.txt", guest)
            shutil.copy(consumers / "main.cpp", guest)
            (guest / "qorix").symlink_to(ROOT)
            commands = configure(guest, "-D", "CMAKE_EXPORT_COMPILE_COMMANDS=ON")
            own = next(c for c in commands if Path(c["file"]).name == "main.cpp" and
                       Path(c["file"]).parent == guest)
            compiled = subprocess.run([*shlex.split(own["command"]), "-fsyntax-only"],
                                      cwd=own["directory"], capture_output=True, text=True)
            self.assertEqual(compiled.returncode, 0, compiled.stderr)


if __name__ == "__main__":
    unittest.main()
