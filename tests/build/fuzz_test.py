#!/usr/bin/env python3
"""Checks what fuzz.py tells of the fuzzers' ends, with small programs in their place. usage: fuzz_test.py ROOT"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(sys.argv.pop(1))
SCRIPT = ROOT / "tests/fuzz/fuzz.py"
LIMIT = 60  # seconds

SOUND = "echo '#5 NEW cov: 12 ft: 34 corp: 3/9b lim: 4'; echo 'stat::number_of_executed_units: 56'"
BROKEN = "echo \"Test unit written to found/broken-7\"; exit 77"


class Fuzz(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.programs = Path(folder.name) / "bin"
        self.programs.mkdir()
        self.found = Path(folder.name) / "found"
        for corpus in (ROOT / "tests/fuzz/corpus").iterdir():
            self.fuzzer(corpus.name, SOUND)

    def fuzzer(self, target, script):
        path = self.programs / f"qorix-fuzz-{target}"
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def run_all(self):
        result = subprocess.run(
            [sys.executable, "-B", SCRIPT, "1", self.programs, self.found], stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, timeout=LIMIT, check=False)
        self.said = result.stdout
        return result.returncode

    def test_each_target_has_a_line_of_figures(self):
        self.assertEqual(self.run_all(), 0)
        self.assertRegex(self.said, r"(?m)^checker +56 +12 +34 +3$")
        self.assertEqual(len(self.said.splitlines()), 1 + len(list(self.programs.iterdir())))

    def test_an_input_that_breaks_a_target_is_named(self):
        self.fuzzer("links", BROKEN)
        self.assertEqual(self.run_all(), 1)
        self.assertEqual(self.said.splitlines()[-1], "broken by found/broken-7")

    def test_a_fuzzer_that_fails_otherwise_is_named(self):
        self.fuzzer("links", "exit 3")
        self.assertEqual(self.run_all(), 1)
        self.assertEqual(self.said.splitlines()[-1], f"broken by status 3, see {self.found}/links.log")

    def test_a_target_without_a_corpus_is_refused(self):
        self.fuzzer("nothing", SOUND)
        self.assertEqual(self.run_all(), 1)
        self.assertIn("a target has no corpus", self.said)


if __name__ == "__main__":
    unittest.main()
