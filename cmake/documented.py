#!/usr/bin/env python3
"""Checks that every public entry of the C interface has a description. usage: documented.py GIR

Prints one line for each entry, argument or result without one and exits 1 if there is any.
"""

import sys
import xml.etree.ElementTree as ElementTree

CORE = "{http://www.gtk.org/introspection/core/1.0}"
GLIB = "{http://www.gtk.org/introspection/glib/1.0}"
# What has a name and is no entry: the file itself, what it includes, and the types of entries.
EXCEPTIONS = {CORE + name for name in ("namespace", "include", "package", "type")}


def is_entry(element):
    """Whether it is something that a description belongs to: of any kind that has a name, or a result."""
    if element.tag in (CORE + "return-value", GLIB + "signal"):
        return True
    return element.tag.startswith(CORE) and "name" in element.attrib and element.tag not in EXCEPTIONS


def needs_none(element):
    """Whether it is the result of what returns nothing, or the structure that GObject has for a class."""
    kind = element.find(CORE + "type")
    return element.get(GLIB + "is-gtype-struct-for") or (
        element.tag == CORE + "return-value" and kind is not None and kind.get("name") == "none")


def undescribed(element, path=""):
    """The names of the entries in `element`, and of itself, that have no description."""
    if needs_none(element):
        return
    name = element.get("name") or ("result" if element.tag == CORE + "return-value" else "")
    path = f"{path}.{name}".strip(".")
    if is_entry(element) and element.find(CORE + "doc") is None:
        yield path
    for child in element:
        yield from undescribed(child, path)


if __name__ == "__main__":
    found = [f"{name} has no description" for name in undescribed(ElementTree.parse(sys.argv[1]).getroot())]
    print("\n".join(found), end="\n" if found else "")
    sys.exit(1 if found else 0)
