#!/usr/bin/env python3
"""Checks what ./run installs and says, without installing anything. usage: run_test.py ROOT

The programs that it calls are replaced by small ones that note their calls. What counts as installed, and
who the user is, is up to each test.
"""

import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(sys.argv.pop(1))
REPLACED = ("apt-get", "clang-format-14", "cmake", "ctest", "ninja", "python3")
LIMIT = 60  # seconds, for whatever is awaited

# The archive has every package; what was asked for is installed from then on.
APT_GET = """
case "$*" in
  *--print-uris*) printf 'Need to get 7 MB of archives.\\n%s\\n' "'http://a/a.deb'" ;;
  install*) printf 'dlstatus:1:40.1:Retrieving\\npmstatus:a:80.5:Unpacking\\n' >&3
    for name; do printf 'installed %s 99\\n' "$name" >>"$0.installed"; done ;;
esac
"""


class Run(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in ("run", "packages.txt", "rooms.txt"):
            shutil.copy(ROOT / name, self.folder / name)
        (self.folder / "include").mkdir()
        self.programs = self.folder / "programs"
        self.programs.mkdir()
        self.calls = self.folder / "calls"
        self.calls.touch()
        self.installed = self.programs / "apt-get.installed"
        self.installed.touch()
        for name in REPLACED:
            self.program(name, APT_GET if name == "apt-get" else "")
        self.program("dpkg-query", f"cat '{self.installed}'")
        self.user(0)

    def program(self, name, script):
        path = self.programs / name
        path.write_text(f'#!/bin/bash\\necho "{name} $*" >>"{self.calls}"\\n{script}\\n'.replace("\\n", "\n"))
        path.chmod(0o755)

    def user(self, number):
        self.program("id", f"echo {number}")

    def start(self, *arguments, **environment):
        kept = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        return subprocess.Popen(
            ["./run", *arguments], cwd=self.folder, stdin=subprocess.DEVNULL, start_new_session=True,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            env={**kept, "PATH": f"{self.programs}:{os.environ['PATH']}", **environment})

    def end(self, process):
        """Ends the process and what it has started."""
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)

    def run_verb(self, *arguments, **environment):
        process = self.start(*arguments, **environment)
        self.said, _ = process.communicate(timeout=LIMIT)
        return process.returncode

    def called(self, program):
        return re.findall(rf"^{program} (.*)", self.calls.read_text(), re.MULTILINE)

    def asked_for(self):
        """The packages that apt-get was to install."""
        for call in self.called("apt-get"):
            if call.startswith("install") and "--print-uris" not in call:
                return {word for word in call.split() if re.match(r"[a-z]", word)} - {"install"}
        return set()

    def packages_of(self, verb):
        """The packages that packages.txt names for a verb."""
        needed, found = False, set()
        for line in (ROOT / "packages.txt").read_text().splitlines():
            words = line.partition("#")[0].split()
            if line.startswith("["):
                needed = verb in line.strip("[]").split()
            elif words and needed:
                found.add(words[0])
        return found


class Packages(Run):
    def test_every_verb_installs_what_is_named_for_it_and_no_more(self):
        for verb in ("test", "soak", "fuzz", "build", "bench", "lint", "format", "sanitize", "docs", "abi", "package"):
            with self.subTest(verb):
                self.calls.write_text("")
                self.installed.write_text("")
                self.run_verb(verb)
                self.assertNotEqual(self.asked_for(), set())
                self.assertEqual(self.asked_for(), self.packages_of(verb))

    def test_the_demo_needs_no_test_library_and_one_compiler(self):
        self.assertEqual(self.run_verb("demo", DISPLAY=":7"), 0)
        self.assertEqual(self.asked_for(), self.packages_of("demo"))
        self.assertIn("libwebkit2gtk-4.1-dev", self.asked_for())
        unwanted = re.compile("clang|llvm|gtest|gmock|benchmark|gumbo|xvfb|xdotool|shellcheck")
        self.assertEqual([name for name in self.asked_for() if unwanted.search(name)], [])

    def test_without_a_display_the_demo_needs_one(self):
        self.assertEqual(self.run_verb("demo"), 0)
        self.assertEqual(self.asked_for(), self.packages_of("demo") | self.packages_of("display"))
        self.assertIn("xvfb", self.asked_for())

    def test_a_wayland_display_is_one(self):
        self.assertEqual(self.run_verb("demo", WAYLAND_DISPLAY="wayland-0"), 0)
        self.assertNotIn("xvfb", self.asked_for())

    def test_what_is_there_is_not_asked_for(self):
        self.installed.write_text("installed g++ 99\ninstalled libexpat1-dev 2.5.0-1\n")
        self.run_verb("build")
        self.assertNotIn("g++", self.asked_for())
        self.assertIn("libexpat1-dev", self.asked_for(), "the one that is there is too old")

    def test_every_package_is_for_a_verb(self):
        lists = re.findall(r"^\[(.*)\]$", (ROOT / "packages.txt").read_text(), re.MULTILINE)
        verbs = set(re.findall(r"^do_(\w+)\(\)", (ROOT / "run").read_text(), re.MULTILINE))
        self.assertEqual({verb for each in lists for verb in each.split()}, verbs | {"display"})

    def test_a_package_that_the_archive_lacks_ends_it(self):
        self.program("apt-get", "")
        self.assertEqual(self.run_verb("build"), 1)
        self.assertIn("apt-get does not offer these packages:\ncmake\n", self.said)
        self.assertEqual(self.called("cmake"), [])

    def test_what_apt_get_says_is_told_if_it_fails(self):
        self.program("apt-get", 'case "$*" in *-qq*install*|install*-qq*) echo no space; exit 100;; esac')
        self.assertEqual(self.run_verb("build"), 1)
        self.assertIn("no space", self.said)


class Docs(Run):
    def test_both_references_are_built(self):
        self.assertEqual(self.run_verb("docs"), 0)
        self.assertEqual(re.findall(r"--target (.+)", "\n".join(self.called("cmake"))), ["docs-cpp docs-c"])

    def test_an_entry_without_a_description_ends_it(self):
        self.program("cmake", 'case "$*" in *docs-cpp*) exit 1;; esac')
        self.assertEqual(self.run_verb("docs"), 1)


class WithoutRoot(Run):
    def setUp(self):
        super().setUp()
        self.user(1000)

    def test_it_works_when_all_is_there(self):
        for name in self.packages_of("demo") | self.packages_of("display"):
            with open(self.installed, "a") as installed:
                installed.write(f"installed {name} 99\n")
        self.assertEqual(self.run_verb("demo"), 0)
        self.assertEqual(self.called("apt-get"), [])
        self.assertTrue(self.called("cmake"))

    def test_what_is_missing_is_named_and_nothing_is_done(self):
        self.assertEqual(self.run_verb("build"), 1)
        self.assertIn("apt-get install cmake g++ ", self.said)
        self.assertEqual(self.called("apt-get") + self.called("cmake"), [])


class TheDemo(Run):
    def test_its_first_words_come_before_anything_is_done(self):
        waiting = self.folder / "waiting"
        os.mkfifo(waiting)
        self.program("dpkg-query", f"cat '{waiting}'; rm -f '{waiting}'")
        process = self.start("demo")
        self.addCleanup(process.communicate)
        self.addCleanup(self.end, process)
        ready, _, _ = select.select([process.stdout], [], [], LIMIT)
        self.assertTrue(ready, "no words while dpkg-query is at work")
        self.assertRegex(process.stdout.readline(), r"^ *\d+\.\d s  QORIX: ")
        self.assertEqual(self.called("cmake") + self.called("apt-get"), [])

    def test_its_steps_are_counted(self):
        self.program("ninja", 'printf "[1/3] a\\n[2/3] b\\n[3/3] c\\n"')
        self.assertEqual(self.run_verb("demo"), 0)
        self.assertRegex(self.said, r"installing 1 packages, 7 MB to fetch")
        self.assertRegex(self.said, r"(?m)^ *\d+\.\d s  second: build .*, 3 steps$")

    def test_it_builds_the_library_and_the_sample_programs_alone(self):
        self.assertEqual(self.run_verb("demo"), 0)
        self.assertEqual(self.called("cmake")[0], "--preset demo")
        self.assertRegex(self.called("cmake")[1], "--target qorix-sample-host qorix-sample-server$")

    def test_it_keeps_the_configuration_of_a_folder_with_the_tests(self):
        (self.folder / "build").mkdir()
        (self.folder / "build/build.ninja").touch()
        self.assertEqual(self.run_verb("demo"), 0)
        self.assertNotIn("--preset demo", self.called("cmake"))

    def test_a_fault_of_the_build_is_shown_and_ends_it(self):
        self.program("cmake", 'case "$*" in *--build*) echo "[1/2] a"; echo "error: b"; exit 1;; esac')
        self.assertEqual(self.run_verb("demo"), 1)
        self.assertIn("error: b\n", self.said)
        self.assertEqual(self.called("python3"), [])


if __name__ == "__main__":
    unittest.main()
