#!/usr/bin/env python3
"""No entry of the C interface can lose its description unseen. usage: documented_test.py FOLDER GIR

FOLDER has documented.py, which the build runs. Each description in GIR is taken away once.
"""

import sys
import unittest
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, sys.argv.pop(1))
GIR = sys.argv.pop(1)

from documented import CORE, undescribed  # noqa: E402


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


if __name__ == "__main__":
    unittest.main()
