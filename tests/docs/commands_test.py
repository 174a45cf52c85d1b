#!/usr/bin/env python3
"""Runs the commands of the guide for hosts. usage: commands_test.py ROOT PROGRAMS

Each must print what the guide shows. Ports are free ones, so that tests do not meet.
"""

import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

ROOT, PROGRAMS = (Path(sys.argv.pop(1)) for _ in range(2))


class Commands(unittest.TestCase):
    def test_each_command_prints_what_the_guide_shows(self):
        blocks = re.findall(r"^```console\n\$ (.*)\n((?:.*\n)*?)```$",
                            (ROOT / "docs/hosts.md").read_text(), re.MULTILINE)
        self.assertNotEqual(blocks, [])
        for command, shown in blocks:
            port = re.search(r"--port (\d+)", command)[1]
            words = command.replace(f"--port {port}", "--port 0").split()
            process = subprocess.Popen(
                words, cwd=ROOT, env={**os.environ, "PATH": f"{PROGRAMS}:{os.environ['PATH']}"},
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
            self.addCleanup(process.stdout.close)
            self.addCleanup(process.wait)
            self.addCleanup(process.terminate)
            said = process.stdout.readline()
            self.assertRegex(said, re.escape(shown).replace(port, r"[1-9]\d*"))


if __name__ == "__main__":
    unittest.main()
