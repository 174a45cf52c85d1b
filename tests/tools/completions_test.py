#!/usr/bin/env python3
"""What the shells complete for a tool, and what its manual says, are the options of its --help.
usage: completions_test.py PROGRAM FOLDER MANUAL

FOLDER has a file for each shell. The shells are real, on a terminal: the test types the beginning of a
command and the Tab key, and a small program in place of the tool prints the arguments that it gets.
"""

import os
import pty
import re
import select
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

PROGRAM, FOLDER, MANUAL = (Path(argument).resolve() for argument in sys.argv[1:])
del sys.argv[1:]
NAME = PROGRAM.name
PATIENCE = 60  # seconds, for whatever is awaited

OPTIONS = re.findall(r"^  (--[a-z-]+)", subprocess.run(
    [PROGRAM, "--help"], check=True, capture_output=True, text=True).stdout, re.MULTILINE)

# What comes before the document; one tool has commands.
COMMAND = ["verify"] if NAME == "qorix-sign" else []
# An option with a value, the beginning of the value, and the whole.
VALUES = [each for each in (("--format", "s", "sarif"), ("--applications", "a", "applications"),
                            ("--screenshot", "p", "picture.png"), ("--output", "p", "picture.png"))
          if each[0] in OPTIONS]

# How each shell is started with nothing but its own completion and ours, and where that lies.
SHELLS = {
    "bash": (FOLDER / "bash" / NAME, ["bash", "--norc", "--noprofile", "-i"],
             "bind 'set enable-bracketed-paste off'; . /usr/share/bash-completion/bash_completion; . '{}'"),
    "zsh": (FOLDER / "zsh" / f"_{NAME}", ["zsh", "-f", "-i"],
            "fpath=('{}' $fpath); autoload -U compinit; compinit -u -D"),
    "fish": (FOLDER / "fish" / f"{NAME}.fish", ["fish", "--no-config", "-i"], "source '{}'"),
}


class Terminal:
    """A shell on a terminal, in a folder of its own."""

    def __init__(self, shell, folder):
        file, command, setup = SHELLS[shell]
        stub = folder / "bin" / NAME
        stub.parent.mkdir()
        stub.write_text('#!/bin/sh\nprintf "GOT("; printf "<%s>" "$@"; echo ")"\n')
        stub.chmod(0o755)
        environment = {"HOME": str(folder), "TERM": "xterm", "LC_ALL": "C.UTF-8",
                       "PATH": f"{stub.parent}:{os.environ['PATH']}"}
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, environment)
        self.text = ""
        self.run(setup.format(file.parent if shell == "zsh" else file) + f"; {NAME} ready")

    def end(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self.terminal)

    def run(self, keys):
        """Types the keys and Enter; returns the arguments that the program then gets."""
        os.write(self.terminal, keys.encode() + b"\r")
        deadline = time.monotonic() + PATIENCE
        while True:
            found = re.search(r"GOT\((.*?)\)", self.text)
            if found:
                self.text = self.text[found.end():]
                return re.findall("<(.*?)>", found[1])
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.terminal], [], [], left)[0]:
                raise AssertionError(f"nothing was run after {keys!r}: {self.text!r}")
            self.text += os.read(self.terminal, 65536).decode(errors="replace")


def beginning_of(option):
    """The shortest beginning that no other option has."""
    for length in range(3, len(option)):
        if sum(other.startswith(option[:length]) for other in OPTIONS) == 1:
            return option[:length]
    return option


class InEachShell(unittest.TestCase):
    shell = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in ("document.xml", "other.txt", "picture.png"):
            (self.folder / name).touch()
        (self.folder / "applications").mkdir()
        self.terminal = Terminal(self.shell, self.folder)
        self.addCleanup(self.terminal.end)

    def completed(self, *words):
        """The arguments after each word was completed."""
        return [word.rstrip("/") for word in
                self.terminal.run(f"{NAME} " + " ".join(word + "\t" for word in words))]

    def test_every_option(self):
        for option in OPTIONS:
            self.assertEqual(self.completed(beginning_of(option)), [option])

    def test_values_and_the_document(self):
        for option, beginning, whole in VALUES:
            self.assertEqual(self.terminal.run(f"{NAME} {option} {beginning}\t")[1].rstrip("/"), whole)
        self.assertEqual(self.completed(*(each[:-1] for each in COMMAND), "d"), [*COMMAND, "document.xml"])

    @unittest.skipIf(COMMAND, "with a command, any file may be meant")
    def test_the_document_is_xml(self):
        """Where no such file fits, zsh and fish take another."""
        self.assertEqual(self.completed("o"), ["o" if self.shell == "bash" else "other.txt"])

    def test_a_value_behind_an_equals_sign(self):
        option, beginning, whole = VALUES[0]
        self.assertEqual(self.completed(f"{option}={beginning}"), [f"{option}={whole}"])

    def test_no_option_that_the_tool_lacks(self):
        text = SHELLS[self.shell][0].read_text()
        named = re.findall(r"(?<![\w-])--[a-z][a-z-]*", text)
        named += ["--" + each for each in re.findall(r"-l ([a-z-]+)", text)]
        self.assertEqual(set(named), set(OPTIONS))


class Bash(InEachShell):
    shell = "bash"


class Zsh(InEachShell):
    shell = "zsh"


class Fish(InEachShell):
    shell = "fish"


del InEachShell


class Manual(unittest.TestCase):
    def test_its_options_are_those_of_the_help(self):
        section = re.search(r"^\.SH OPTIONS\n(.*?)^\.SH ", MANUAL.read_text(), re.MULTILINE | re.DOTALL)[1]
        heads = re.findall(r"^\.TP\n\.BI? (\S+)", section, re.MULTILINE)
        self.assertEqual([head.replace("\\-", "-") for head in heads if head != '"'],
                         [option for option in OPTIONS if option not in ("--help", "--version")]
                         + ["--help", "--version"])

    def test_it_is_clean(self):
        for command in (["mandoc", "-T", "lint", "-W", "warning", MANUAL],
                        ["man", "--warnings", "-l", MANUAL]):
            result = subprocess.run(command, capture_output=True, text=True,
                                    env={**os.environ, "LC_ALL": "C.UTF-8", "MANPAGER": "cat"})
            self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)

    def test_it_tells_every_exit_status_of_the_help(self):
        said = subprocess.run([PROGRAM, "--help"], capture_output=True, text=True).stdout
        section = re.search(r"^\.SH EXIT STATUS\n(.*?)^\.SH ", MANUAL.read_text(), re.MULTILINE | re.DOTALL)[1]
        told = re.findall(r"^\.B (\d)$", section, re.MULTILINE)
        self.assertEqual(told[:2], ["0", "1"])
        if "Exit status:" in said:
            self.assertEqual(told, re.findall(r"[:,]\s(\d) ", said.partition("Exit status")[2]))


if __name__ == "__main__":
    unittest.main()
