#!/usr/bin/env python3
"""The binary interface of the shared libraries is the one that abi/ keeps.
usage: abi_test.py [--renew] ROOT COMPILER LIBRARY...

For each library abi/ has a list of the exported symbols, with what the functions return; a symbol
does not tell that. types-N.abi describes the public classes: sizes, members, virtual functions. N is
the soname's number. With --renew they are written anew, unless hosts that are built would break.
"""

import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

CLASS = re.compile(r"^(?:class|struct) (?:QORIX_EXPORT )?(?:\[\[\w+\]\] )?(\w+)(?:\s+: [^;{]*)? {", re.MULTILINE)
TEMPLATE = re.compile(r"^template <.*>\n(?:class|struct) ", re.MULTILINE)
DESCRIBE = ["abidw", "--exported-interfaces-only", "--no-show-locs", "--no-corpus-path",
            "--no-comp-dir-path", "--no-elf-needed"]
FAILED = 3  # those bits of abidiff's exit status
ONLY_ADDED = re.compile(r"Functions changes summary: 0 Removed, 0 Changed\b")


def output(command, **more):
    result = subprocess.run(command, capture_output=True, text=True, **more)
    if result.returncode != 0:
        sys.exit(f"{command} failed:\n{result.stdout}{result.stderr}")
    return result.stdout


def soname(library):
    return re.search(r"SONAME\s+(\S+)", output(["objdump", "-p", library]))[1]


class Types:
    """The types of abidw's description, by its identifiers."""

    WRAPPED = {"pointer-type-def": "{}*", "reference-type-def": "{}&", "qualified-type-def": "const {}"}

    def __init__(self, description):
        self.elements = {element.get("id"): element for element in description.iter() if element.get("id")}

    def name(self, identifier):
        element = self.elements[identifier]
        wrapping = self.WRAPPED.get(element.tag)
        return wrapping.format(self.name(element.get("type-id"))) if wrapping else element.get("name")


def returned(library):
    """What the functions return, by their symbols."""
    description = ElementTree.fromstring(output([*DESCRIBE, library]))
    types = Types(description)
    return {function.get("mangled-name"): types.name(function.find("return").get("type-id"))
            for function in description.iter("function-decl") if function.find("return") is not None}


def symbols(library):
    """The exported symbols as the source spells them, each with what it returns."""
    lines = output(["nm", "-D", "--defined-only", "--with-symbol-versions", library]).splitlines()
    mangled = sorted({line.split(" ", 2)[2] for line in lines})
    spelled = output(["c++filt"], input="\n".join(mangled)).splitlines()
    types = returned(library)
    for symbol, text in zip(mangled, spelled):
        result = types.get(symbol.partition("@")[0], "void")
        yield text if result == "void" else f"{text} -> {result}"


def probe(include):
    """A source that has every public class complete."""
    headers = [header for header in sorted(include.rglob("*.h")) if header.name != "qorix-gtk.h"]
    names = []
    for header in headers:
        text = header.read_text()
        space = "qorix::gtk" if "namespace qorix::gtk {" in text else "qorix"
        names += [f"{space}::{name}" for name in CLASS.findall(TEMPLATE.sub("", text))]
    return "".join([*(f"#include <{header.relative_to(include)}>\n" for header in headers),
                    *(f'extern "C" void has_{name.replace("::", "_")}({name}*) {{}}\n' for name in names)])


def describe_classes(include, compiler, file):
    with tempfile.TemporaryDirectory(prefix="qorix-abi-") as folder:
        library = Path(folder) / "probe.so"
        output([compiler, "-std=c++20", "-g", "-fPIC", "-shared", "-femit-class-debug-always",
                f"-I{include}", "-x", "c++", "-", "-o", library], input=probe(include))
        file.write_text(output([*DESCRIBE, library]))


def symbol_changes(library, kept):
    """Yields what has changed, each with whether it breaks hosts."""
    old, new = set(kept.read_text().splitlines()), set(symbols(library))
    yield from ((f"{kept.stem} no longer has {symbol}", True) for symbol in sorted(old - new))
    yield from ((f"{kept.stem} now has {symbol}", False) for symbol in sorted(new - old))


def class_changes(include, compiler, kept):
    with tempfile.NamedTemporaryFile(suffix=".abi") as now:
        describe_classes(include, compiler, Path(now.name))
        result = subprocess.run(["abidiff", kept, now.name], capture_output=True, text=True)
    if result.returncode & FAILED:
        sys.exit(f"abidiff failed:\n{result.stdout}{result.stderr}")
    if result.returncode:
        yield result.stdout, not ONLY_ADDED.search(result.stdout)


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--renew"]
    root, compiler, libraries = Path(arguments[0]), arguments[1], arguments[2:]
    include = root / "include"
    lists = {library: root / f"abi/{soname(library)}.symbols" for library in libraries}
    classes = root / f"abi/types-{soname(libraries[0]).rpartition('.')[2]}.abi"
    changes = []
    if all(file.exists() for file in (classes, *lists.values())):
        changes = list(class_changes(include, compiler, classes))
        for library, kept in lists.items():
            changes += symbol_changes(library, kept)
    elif "--renew" not in sys.argv:
        sys.exit("abi/ has nothing of these sonames: ./run abi")
    print("".join(f"{change}\n" for change, _ in changes), end="")
    if any(breaks for _, breaks in changes):
        sys.exit("Hosts that are built would break: a new soname is needed (QORIX_ABI, see abi/README.md)")
    if "--renew" in sys.argv:
        describe_classes(include, compiler, classes)
        for library, kept in lists.items():
            kept.write_text("".join(f"{symbol}\n" for symbol in symbols(library)))
    elif changes:
        sys.exit("Hosts that are built go on: ./run abi keeps the new interface")
    print("the interface is the one that abi/ keeps")


if __name__ == "__main__":
    main()
