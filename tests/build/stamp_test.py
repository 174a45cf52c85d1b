#!/usr/bin/env python3
"""Checks the time that a build stamps into the library. usage: stamp_test.py CMAKE SCRIPT NINJA BUILD

SCRIPT writes the stamp; BUILD is a folder in which NINJA has built the library.
"""

import os
import re
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

CMAKE, SCRIPT, NINJA, BUILD = (sys.argv.pop(1) for _ in range(4))


def stamp(**environment):
    """The date and the time that a build with that environment holds."""
    with tempfile.TemporaryDirectory() as folder:
        output = Path(folder) / "stamp.cpp"
        kept = {k: v for k, v in os.environ.items() if k != "SOURCE_DATE_EPOCH"}
        command = [CMAKE, "-D", f"OUTPUT={output}", "-P", SCRIPT]
        subprocess.run(command, check=True, env={**kept, **environment})
        return tuple(re.findall(r'"([^"]*)";', output.read_text()))


class Stamp(unittest.TestCase):
    def test_a_day_of_one_digit_is_padded_with_a_blank(self):
        self.assertEqual(stamp(SOURCE_DATE_EPOCH="1704447667"), ("Jan  5 2024", "09:41:07"))

    def test_a_day_of_two_digits_is_not(self):
        self.assertEqual(stamp(SOURCE_DATE_EPOCH="1735689599"), ("Dec 31 2024", "23:59:59"))
        self.assertEqual(stamp(SOURCE_DATE_EPOCH="1707523200"), ("Feb 10 2024", "00:00:00"))

    def test_the_given_time_is_told_in_utc(self):
        given = stamp(SOURCE_DATE_EPOCH="1704447667", TZ="Asia/Tokyo")
        self.assertEqual(given, ("Jan  5 2024", "09:41:07"))

    def test_without_a_given_time_it_is_the_clocks(self):
        before = int(time.time())
        date, clock = stamp()
        stamped = time.mktime(time.strptime(f"{date} {clock}", "%b %d %Y %H:%M:%S"))
        self.assertLessEqual(before, stamped)
        self.assertLessEqual(stamped, time.time())


def ask(*question):
    command = [NINJA, "-C", BUILD, "-t", *question]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def inputs(output):
    """What has to be older than `output`, or else that is made anew."""
    named = re.search(r"  input: .*\n((?:    .*\n)*)", ask("query", output)).group(1).split("\n")
    return {line.strip() for line in named if line and not line.startswith("    ||")}


class Renewal(unittest.TestCase):
    def test_whatever_is_compiled_anew_renews_the_stamp(self):
        rule = r"^(\S+): CXX_(?:SHARED|STATIC)_LIBRARY_LINKER__qorix_"
        [library] = re.findall(rule, ask("targets", "all"), re.MULTILINE)
        objects = {path for path in inputs(library) if path.endswith(".o")}
        of_the_stamp = {path for path in objects if path.endswith("BuildStamp.cpp.o")}
        self.assertEqual(len(of_the_stamp), 1)
        self.assertTrue(objects - of_the_stamp)
        self.assertEqual(objects - of_the_stamp - inputs("BuildStamp.cpp"), set())


if __name__ == "__main__":
    unittest.main()
