#!/usr/bin/env python3
"""Checks who includes whom. usage: layering.py ROOT

Prints one line for each #include that the house does not allow and exits 1 if there is any. Which room
may know which is in rooms.txt; the linker holds the calls to the same list.
"""

import re
import sys
from pathlib import Path

from rooms import PROGRAMS, Rooms

TOOLKIT = re.compile(
    r"(gtk|gdk|gdk-pixbuf|webkit2?|webkitdom|jsc|JavaScriptCore|pango|cairo|atk|X11|libsoup)[/.-]|"
    r"(gtk|gdk|cairo|webkit)[a-z0-9]*\.h$"
)
GLIB = re.compile(r"(glib|gio|gobject|gmodule)([/.-]|-object\.h)|glib(-[a-z]+)?\.h$")

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)")')

# The public header that offers the toolkit's types to C.
C_INTERFACE = Path("include/qorix/qorix-gtk.h")

# What a public header says of itself, and which of the others it may include.
KINDS = {
    "// For hosts.": ("hosts", {"hosts", "machinery", "platform"}),
    "// Machinery: public for those who extend it.": ("machinery", {"machinery", "platform"}),
    "// Platform: values and ports.": ("platform", {"platform"}),
}


def may_use_toolkit(rooms, path):
    """The GTK platform with its C interface, the programs that start it, and its own tests."""
    return (
        rooms.of(path) in ("platform/gtk", "platform/gtk/glib", "examples")
        or path == C_INTERFACE
        or path.parts[:2] == ("tools", "preview")
        or path.parts[:3] in (("tools", "common", "display"), ("tests", "package", "consumers"))
        or path.parts[0] in ("tests", "bench")
        and "gtk" in str(path).lower()
    )


def kind_of(root, name):
    """What the public header `name` says of itself, or None."""
    for line in (root / "include" / name).read_text().splitlines():
        line = re.sub(r"^/\* (.*) \*/$", r"// \1", line)  # as C has it
        if line in KINDS:
            return KINDS[line][0]
    return None


def implementing_rooms(rooms, name):
    """The rooms that implement a public header: those with its source, or one of its sources."""
    stem = Path(name).stem
    return {
        room
        for room in rooms.listed
        for source in (rooms.root / room).glob("*.cpp*")
        if source.name.split(".")[0].split("+")[0] == stem
    }


def fault_of_public(rooms, path, name):
    """What is wrong with a public header including `name` in angle brackets, or None."""
    if not name.startswith("qorix/"):
        if path == C_INTERFACE and TOOLKIT.match(name):
            return None
        if not re.fullmatch(r"[a-z_]+", name):
            return "a public header includes nothing but C++'s own headers and public ones"
        return None
    own, other = (kind_of(rooms.root, n) for n in (str(path.relative_to("include")), name))
    allowed = next((may for kind, may in KINDS.values() if kind == own), set())
    return None if other in allowed | {None} else f"a header of kind {own} must not know {other}"


def fault(rooms, path, system, quoted):
    """What is wrong with one include of `path`, or None."""
    room = rooms.of(path)
    name = system or quoted
    if TOOLKIT.match(name) and not may_use_toolkit(rooms, path):
        return "a toolkit header outside platform/gtk"
    if GLIB.match(name) and not may_use_toolkit(rooms, path) and room != "platform/linux":
        return "a GLib header outside platform/gtk and platform/linux"
    if quoted and quoted.startswith("qorix/"):
        return "public headers are written <qorix/Name.h>"
    if system and system.startswith("qorix/") and not (rooms.root / "include" / system).is_file():
        return "no such public header"
    if room == "include":
        return "a public header includes no private one" if quoted else fault_of_public(rooms, path, name)
    if room in PROGRAMS:
        return None
    known = rooms.known_to(room)
    if system:
        implementing = implementing_rooms(rooms, name) if name.startswith("qorix/") else set()
        if implementing and not implementing & known:
            return f"{room} must not know {', '.join(sorted(implementing))}"
        return None
    target = Path(quoted)
    if ".." in target.parts or not (rooms.root / target).is_file():
        return "no such file; write it as room/Name.h"
    if rooms.of(target) not in known:
        return f"{room} must not know {rooms.of(target)}"
    return None


def faults(root):
    rooms = Rooms(root)
    for path in rooms.sources():
        if path.parts[0] == "include" and kind_of(root, str(path.relative_to("include"))) is None:
            if path.name not in ("Export.h", "FactoryKey.h"):
                yield f"{path}:1: it does not say for whom it is"
        for number, line in enumerate((root / path).read_text().splitlines(), 1):
            match = INCLUDE.match(line)
            what = fault(rooms, path, *match.groups()) if match else None
            if what:
                yield f"{path}:{number}: {line.strip()}: {what}"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "every include points the right way")
    sys.exit(1 if found else 0)
