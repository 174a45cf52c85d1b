#!/usr/bin/env python3
"""The linker refuses a call from a room to one that it does not know.
usage: upward_calls_test.py NINJA BUILD ROOT CXX

BUILD is a folder in which NINJA has linked each room alone. Each is linked once more with a function in
it that calls others: those of the rooms that it knows are found, those of all other rooms are not.
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
    """Links the room alone with calls of `functions` in it; returns what the linker says."""
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
        result = subprocess.run(["sh", "-c", link.replace("-Wl,-z,defs", "-Wl,-z,defs,--no-demangle")],
                                cwd=BUILD, capture_output=True, text=True)
    return result.returncode, result.stdout + result.stderr


class UpwardCalls(unittest.TestCase):
    def test_calls_of_known_rooms_are_linked(self):
        for room in ROOMS.listed:
            with self.subTest(room=room):
                below = sorted(ROOMS.known_to(room) - {room})
                status, text = link_with_calls(room, [a_function_of(b) for b in below])
                self.assertEqual(status, 0, text)

    def test_calls_of_other_rooms_are_refused(self):
        for room in ROOMS.listed:
            others = sorted(set(ROOMS.listed) - ROOMS.known_to(room))
            functions = [a_function_of(other) for other in others]
            with self.subTest(room=room):
                status, text = link_with_calls(room, functions)
                refused = set(re.findall(r"undefined reference to `([^']+)'", text))
                self.assertEqual(refused & set(functions), set(functions), text)
                self.assertEqual(status != 0, bool(functions))


if __name__ == "__main__":
    unittest.main()
