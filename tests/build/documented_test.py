#!/usr/bin/env python3
"""No entry of the C interface can lose its description unseen. usage: documented_test.py FOLDER GIR

FOLDER has documented.py, which the build runs. Each description in GIR is taken away once, and an entry of
each kind is added without one.
"""

import sys
import unittest
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, sys.argv.pop(1))
GIR = sys.argv.pop(1)

from documented import CORE, GLIB, undescribed  # noqa: E402

# Every kind that introspection has.
KINDS = [CORE + kind for kind in (
    "alias bitfield callback class constant constructor enumeration field function function-macro instance-parameter "
    "interface member method parameter property record return-value union virtual-method").split()]
KINDS += [GLIB + "signal"]


class Descriptions(unittest.TestCase):
    def setUp(self):
        self.root = ElementTree.parse(GIR).getroot()

    def test_the_interface_is_described(self):
        self.assertEqual(list(undescribed(self.root)), [])

    def test_a_missing_description_is_found(self):
        described = [element for element in self.root.iter() if element.find(CORE + "doc") is not None]
        self.assertGreater(len(described), 100)
        for element in described:
            description = element.find(CORE + "doc")
            element.remove(description)
            self.assertEqual(len(list(undescribed(self.root))), 1, element.attrib)
            element.insert(0, description)

    def test_a_new_entry_of_any_kind_is_found(self):
        for parent in (self.root.find(CORE + "namespace"), self.root.find(f".//{CORE}class")):
            for kind in KINDS:
                added = ElementTree.SubElement(parent, kind, name="added")
                self.assertEqual([path.rpartition(".")[2] for path in undescribed(self.root)], ["added"], kind)
                parent.remove(added)


if __name__ == "__main__":
    unittest.main()
