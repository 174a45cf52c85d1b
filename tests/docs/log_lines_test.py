#!/usr/bin/env python3
"""Checks that the guides explain each log line that a host can see. usage: log_lines_test.py ROOT

The lines are taken from the calls in the sources: those with a number as method and number, the others by
their text up to what changes. docs/hosts.md explains each that docs/ad-authors.md does not, and no other.
"""

import re
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(sys.argv.pop(1))
TEXT = r'"((?:[^"\\]|\\.)*)"'
CHECK = re.compile(r"\b(?:logCheck|userInfoOf|refuse|post)\(")
METHOD = re.compile(r'"([+-]\[[^"]*\])"')
CONSTANT = re.compile(r"\b(k\w*Method)\b")
AUTHORS_TABLE = re.compile(r"^`([+-]\[[^`]*)`.*\n\n\|.*\n\|.*\n((?:\|.*\n)+)", re.MULTILINE)
LINE = re.compile(r"\b(?:logLine|report|reportTrouble|log_->write)\(\s*(?:std::string\()?" + TEXT)


def arguments(source, begin):
    """The text from `begin` to the bracket that closes the one before it."""
    depth, end = 1, begin
    while depth:
        depth += {"(": 1, ")": -1}.get(source[end], 0)
        end += 1
    return source[begin:end - 1]


def method_of(source, position, call):
    """The method that a call names, itself or by a constant, or that was named last before it."""
    named = METHOD.findall(call)
    if not named and CONSTANT.search(call):
        constant = CONSTANT.search(call)[1]
        named = re.findall(rf'{constant} =\s*"([+-]\[[^"]*\])"', source[:position])
    return (named or METHOD.findall(source[:position]) or [None])[-1]


def sources(root):
    rooms = re.findall(r"^([a-z][a-z/]*)", (root / "rooms.txt").read_text(), re.MULTILINE)
    for room in rooms:
        for path in sorted((root / room).glob("*")):
            if path.suffix in (".cpp", ".h"):
                yield path.read_text()


def checks(root):
    """Method and number of each numbered line."""
    for source in sources(root):
        for match in CHECK.finditer(source):
            call = arguments(source, match.end())
            for number in re.findall(r"(?<![\w\"])(\d{2,3})(?![\w\"])", call):
                yield method_of(source, match.start(), call), int(number)


def texts(root):
    """The beginning of each other line."""
    for source in sources(root):
        yield from (text.rstrip() for text in LINE.findall(source))


class Guides:
    def __init__(self, root):
        hosts = (root / "docs/hosts.md").read_text()
        authors = (root / "docs/ad-authors.md").read_text()
        self.checks = {(method, int(number)) for method, number in
                       re.findall(r"^\| `([+-]\[[^`]*)` \| (\d+) \|", hosts, re.MULTILINE)}
        self.checks_of_authors = {
            (method, int(number)) for method, rows in AUTHORS_TABLE.findall(authors)
            for number in re.findall(r"^\| (\d+) ", rows, re.MULTILINE)}
        section = hosts.partition("### Lines without a number")[2]
        self.texts = self.lines(section)
        self.of_authors = self.lines(authors.partition("### Other lines")[2])

    @staticmethod
    def lines(section):
        return {text.partition("…")[0].rstrip()
                for text in re.findall(r"^\| `([^`]*)` \|", section, re.MULTILINE)}


class LogLines(unittest.TestCase):
    def setUp(self):
        self.guides = Guides(ROOT)
        self.maxDiff = None

    def test_each_line_with_a_number_is_explained(self):
        seen = set(checks(ROOT)) - self.guides.checks_of_authors
        self.assertEqual(sorted(seen), sorted(self.guides.checks))

    def test_each_line_without_a_number_is_explained(self):
        self.assertEqual(sorted(set(texts(ROOT)) - self.guides.of_authors), sorted(self.guides.texts))

    def test_a_new_line_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            (root / "rooms.txt").write_text("# rooms\nmanager\n")
            (root / "manager").mkdir()
            (root / "manager/New.cpp").write_text(
                'constexpr const char* kMethod = "-[New do:]";\n'
                'void f() { logCheck(kMethod, 123, kFatalError); logLine("ZAM New " + text()); }\n'
                'void g() { logCheck("+[New make]", 45, "It failed: 67"); }\n')
            self.assertEqual(list(checks(root)), [("-[New do:]", 123), ("+[New make]", 45)])
            self.assertEqual(list(texts(root)), ["ZAM New"])


if __name__ == "__main__":
    unittest.main()
