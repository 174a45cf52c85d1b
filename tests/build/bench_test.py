"""Every benchmark runs to its end and fills its tables.

Each is run as a trial: everything once. What the figures are is not looked at.
"""

import os
import subprocess
import sys
import unittest


class Benchmark(unittest.TestCase):
    def test_runs(self):
        run = subprocess.run([PROGRAM], env={**os.environ, "QORIX_BENCH_TRIAL": "1"}, text=True,
                             capture_output=True, timeout=600)
        self.assertEqual(run.returncode, 0, run.stderr[-2000:])
        rows = [line for line in run.stdout.splitlines() if line.startswith("| ") and "QORIX" not in line]
        self.assertGreater(len(rows), 0, run.stdout)
        for row in rows:
            cells = [cell.strip() for cell in row.strip("|").split("|")]
            value = float(cells[1])
            self.assertEqual(value, value, row)  # a number


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
