#!/usr/bin/env python3
"""Checks who includes whom. usage: layering.py ROOT

Prints one line for each #include that the house does not allow and exits 1 if there is any.
"""

import re
import sys
from pathlib import Path

# What each room may include besides itself and the C++ standard library.
PORTS = {"platform", "include"}
BELOW = {
    "platform": set(),
    "include": {"platform"},
    "definition": PORTS,
    "sources": PORTS,
    "webview": PORTS | {"definition", "sources"},
    "presentation": PORTS | {"definition", "sources", "webview"},
    "manager": PORTS | {"definition", "sources", "webview", "presentation"},
    "platform/linux": PORTS,
    "platform/gtk": PORTS | {"platform/linux"},
}
# Whoever builds a program may include every room.
PROGRAMS = ("examples", "tools", "tests", "bench")

TOOLKIT = re.compile(
    r"(gtk|gdk|gdk-pixbuf|webkit2?|webkitdom|jsc|JavaScriptCore|pango|cairo|atk|X11|libsoup)[/.-]|"
    r"(gtk|gdk|cairo|webkit)[a-z0-9]*\.h$"
)
GLIB = re.compile(r"(glib|gio|gobject|gmodule)([/.-]|-object\.h)|glib(-[a-z]+)?\.h$")

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)")')


def room_of(path):
    """The room of a file, given relative to the root."""
    parts = path.parts
    if parts[0] == "platform" and len(parts) > 2:
        return "/".join(parts[:2])
    return parts[0]


def may_use_toolkit(path):
    """The GTK platform, the programs that start it, and its own tests."""
    return (
        room_of(path) in ("platform/gtk", "examples")
        or path.parts[:2] == ("tools", "preview")
        or path.parts[:3] == ("tools", "common", "display")
        or room_of(path) in ("tests", "bench")
        and "gtk" in str(path).lower()
    )


def sources(root):
    for room in [r for r in BELOW if "/" not in r] + list(PROGRAMS):
        for path in sorted((root / room).rglob("*")):
            if path.suffix in (".h", ".cpp") and path.is_file():
                yield path.relative_to(root)


def resolve(root, path, name):
    """The file that a quoted include of `path` means, relative to the root, or None."""
    if ".." in Path(name).parts:
        return None
    folders = [Path(), Path("include")]
    if room_of(path) in PROGRAMS:
        folders += [Path(path.parts[0]), path.parent]
    for folder in folders:
        if (root / folder / name).is_file():
            return folder / name
    return None


def fault(root, path, system, quoted):
    """What is wrong with one include of `path`, or None."""
    room = room_of(path)
    name = system or quoted
    if TOOLKIT.match(name) and not may_use_toolkit(path):
        return "a toolkit header outside platform/gtk"
    if GLIB.match(name) and not may_use_toolkit(path) and room != "platform/linux":
        return "a GLib header outside platform/gtk and platform/linux"
    if system:
        is_port = path.parent == Path("platform") and path.suffix == ".h"
        if (room == "include" or is_port) and not re.fullmatch(r"[a-z_]+", name):
            return "the public headers and the ports include nothing but C++'s own headers"
        return None
    if room in PROGRAMS:
        return None
    target = resolve(root, path, quoted)
    if target is None:
        return "no such file; write it as room/Name.h or qorix/Name.h"
    if room_of(target) != room and room_of(target) not in BELOW[room]:
        return f"{room} must not know {room_of(target)}"
    return None


def faults(root):
    for path in sources(root):
        for number, line in enumerate((root / path).read_text().splitlines(), 1):
            match = INCLUDE.match(line)
            what = fault(root, path, *match.groups()) if match else None
            if what:
                yield f"{path}:{number}: {line.strip()}: {what}"


if __name__ == "__main__":
    found = list(faults(Path(sys.argv[1])))
    print("\n".join(found) or "every include points the right way")
    sys.exit(1 if found else 0)
