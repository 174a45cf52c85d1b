#!/usr/bin/env python3
"""The linker refuses a call from a room to one that it does not know.
usage: upward_calls_test.py NINJA BUILD ROOT CXX

BUILD is a folder in which NINJA has linked each room alone. Each is linked once more with calls of a
function of every room in it: the linker must find those of the rooms that it knows, and no others.
"""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from rooms import Rooms

NINJA, BUILD, ROOT, CXX = (sys.argv.pop(1) for _ in range(4))
ROOMS = Rooms(ROOT)


def target(room):
    return "qorix-room-" + room.replace("/", "-")


def a_function_of(room):
    """The linker's name of a function that the room defines."""
    archive = Path(BUILD) / room / f"lib{target(room)}.a"
    names = subprocess.run(["nm", "--defined-only", "--format=posix", str(archive)],
                           check=True, capture_output=True, text=True).stdout
    return re.search(r"^(_ZN\S+) T ", names, re.MULTILINE)[1]


def link_with_calls(room, functions):
    """Links the room alone with calls of `functions` in it; returns those that the linker refuses."""
    commands = subprocess.run([NINJA, "-C", BUILD, "-t", "commands", target(room) + "-alone"],
                              check=True, capture_output=True, text=True).stdout
    link = commands.splitlines()[-1]
    with tempfile.TemporaryDirectory() as folder:
        calls = Path(folder) / "calls.cpp"
        calls.write_text("".join(
            f'void called{i}() __asm__("{name}"); void call{i}() {{ called{i}(); }}\n'
            for i, name in enumerate(functions)))
        objects = Path(folder) / "calls.o"
        subprocess.run([CXX, "-fPIC", "-c", calls, "-o", objects], check=True)
        link, count = re.subn(r"-o \S+", f"-o {folder}/room.so {objects}", link)
        assert count == 1, link
        link = link.replace("-Wl,-z,defs", "-Wl,-z,defs,--no-demangle,--strip-all")
        result = subprocess.run(["sh", "-c", link], cwd=BUILD, capture_output=True, text=True)
    refused = set(re.findall(r"undefined reference to `([^']+)'", result.stdout + result.stderr))
    assert (result.returncode != 0) == bool(refused), result.stderr
    return refused


class UpwardCalls(unittest.TestCase):
    def test_calls_of_unknown_rooms_are_refused_and_no_others(self):
        functions = {room: a_function_of(room) for room in ROOMS.listed}
        for room in ROOMS.listed:
            with self.subTest(room=room):
                unknown = functions.keys() - ROOMS.known_to(room)
                self.assertEqual(link_with_calls(room, functions.values()),
                                 {functions[each] for each in unknown})


if __name__ == "__main__":
    unittest.main()
