#!/usr/bin/env python3
"""The reference of the C++ interface is whole. usage: docs_test.py CMAKE ROOT"""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, ROOT = sys.argv.pop(1), Path(sys.argv.pop(1))


class Docs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.headers = self.folder / "include"
        shutil.copytree(ROOT / "include", self.headers)

    def build(self):
        """Builds the reference of the copied headers; returns the exit status and what was said."""
        result = subprocess.run(
            [CMAKE, "-D", f"HEADERS={self.headers}", "-D", f"OUTPUT={self.folder / 'reference'}",
             "-D", "VERSION=2.0", "-P", ROOT / "cmake/CppReference.cmake"],
            capture_output=True, text=True)
        return result.returncode, result.stdout + result.stderr

    def replace(self, name, old, new):
        path = self.headers / "qorix" / name
        self.assertIn(old, path.read_text())
        path.write_text(path.read_text().replace(old, new, 1))

    def assert_refused(self, what):
        status, said = self.build()
        self.assertNotEqual(status, 0)
        self.assertIn(what, said)

    def test_every_public_entry_is_described(self):
        status, said = self.build()
        self.assertEqual(status, 0, said)
        pages = {page.name for page in (self.folder / "reference").glob("*.html")}
        self.assertIn("classqorix_1_1MyPushAdManager.html", pages)
        self.assertIn("structqorix_1_1gtk_1_1InstallOptions.html", pages)

    def test_a_method_without_description_is_refused(self):
        self.replace("MyPushAdManager.h", "  /// Forgets it.", "  void undescribed();\n\n  /// Forgets it.")
        self.assert_refused("undescribed() (function) of class qorix::MyPushAdManager is not documented")

    def test_a_protected_method_without_description_is_refused(self):
        self.replace("MyPushAdOperator.h", " protected:\n", " protected:\n  void undescribed();\n\n")
        self.assert_refused("undescribed() (function) of class qorix::MyPushAdOperator is not documented")

    def test_a_function_without_description_is_refused(self):
        self.replace("gtk3.h", "}  // namespace qorix::gtk", "void undescribed();\n\n}")
        self.assert_refused("undescribed() (function) of namespace qorix::gtk is not documented")

    def test_a_class_without_description_is_refused(self):
        self.replace("QORIXInfo.h", "/// What the library says", "class Undescribed {\n public:\n  int number;\n};\n\n/// What the library says")
        self.assert_refused("Compound qorix::Undescribed is not documented")

    def test_a_reference_to_nothing_is_refused(self):
        self.replace("MyPushAdManager.h", "  /// Forgets it.", "  /// Forgets it. @see nowhere @ref Nothing")
        self.assert_refused("unable to resolve reference to 'Nothing'")


if __name__ == "__main__":
    unittest.main()
