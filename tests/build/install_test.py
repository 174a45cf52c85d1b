#!/usr/bin/env python3
"""What `cmake --install` installs, and that a host needs nothing else.
usage: install_test.py CMAKE ROOT BUILD

Installs what is built into a folder of its own, and moves it elsewhere.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from fnmatch import fnmatch
from pathlib import Path

CMAKE, ROOT, BUILD = (sys.argv.pop(1) for _ in range(3))

# What each component has; "*" is any text without an end.
COMPONENTS = {
    "runtime": ["lib/libqorix.so.2*", "lib/libqorix-gtk3.so.2*", "lib/qorix-gtk3-2/qorix-webprocess.so"],
    "development": ["include/qorix-2/qorix/*.h", "lib/libqorix.so", "lib/libqorix-gtk3.so",
                    "lib/cmake/qorix/qorix-*.cmake", "lib/pkgconfig/qorix-2.0.pc",
                    "lib/pkgconfig/qorix-gtk3-2.0.pc"],
    "introspection": ["lib/girepository-1.0/Qorix-2.0.typelib", "share/gir-1.0/Qorix-2.0.gir",
                      "share/vala/vapi/qorix-gtk3-2.0.vapi", "share/vala/vapi/qorix-gtk3-2.0.deps"],
    "tools": [pattern.format(tool) for tool in ("adcheck", "preview", "sign") for pattern in (
        "bin/qorix-{}", "share/man/man1/qorix-{}.1", "share/bash-completion/completions/qorix-{}",
        "share/zsh/site-functions/_qorix-{}", "share/fish/vendor_completions.d/qorix-{}.fish",
        "share/qorix/schema/*")],
    "documentation": ["share/doc/qorix/README.md", "share/doc/qorix/CHANGELOG.md",
                      "share/doc/qorix/docs/hosts.md", "share/doc/qorix/docs/*.md",
                      "share/doc/qorix/docs/images/*.png", "share/doc/qorix/docs/schema/*",
                      "share/doc/qorix/examples/host/main.cpp",
                      "share/doc/qorix/examples/*"],
}
HOSTS = Path(__file__).resolve().parent.parent / "package/hosts_test.py"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror"]
COMPILERS = {".cpp": ["g++", "clang++-14"], ".c": ["gcc", "clang-14"]}


def run(command, **more):
    result = subprocess.run(command, capture_output=True, text=True, **more)
    if result.returncode != 0:
        raise AssertionError(f"{command} failed:\n{result.stdout[-3000:]}\n{result.stderr[-3000:]}")
    return result.stdout


def files_in(folder):
    """The files and links in a folder, as paths from there."""
    return {os.path.relpath(os.path.join(place, name), folder)
            for place, _, names in os.walk(folder) for name in names}


def compile_header(compiler, flags, header):
    """Returns what the compiler says of a source that includes just that header, twice."""
    language = ["-x", "c++", "-std=c++20"] if "++" in compiler else ["-x", "c", "-std=c11"]
    source = f"#include <{header}>\n" * 2
    result = subprocess.run([compiler, *language, *WARNINGS, "-fsyntax-only", *flags, "-"],
                            input=source, capture_output=True, text=True)
    return f"{compiler}: <{header}>:\n{result.stderr}" if result.returncode != 0 else ""


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory(prefix="qorix-install-")
        cls.addClassCleanup(temporary.cleanup)
        cls.staging = Path(temporary.name) / "staging"
        cls.by_component = {}
        for component in COMPONENTS:
            run([CMAKE, "--install", BUILD, "--prefix", "/opt/qorix", "--component", component],
                env={**os.environ, "DESTDIR": str(cls.staging / component)})
            cls.by_component[component] = files_in(cls.staging / component)
        run([CMAKE, "--install", BUILD, "--prefix", "/opt/qorix"],
            env={**os.environ, "DESTDIR": str(cls.staging / "all")})
        cls.prefix = Path(temporary.name) / "elsewhere"
        (cls.staging / "all/opt/qorix").rename(cls.prefix)
        cls.include = cls.prefix / "include/qorix-2"
        cls.packages = {**os.environ, "PKG_CONFIG_PATH": str(cls.prefix / "lib/pkgconfig")}

    def pkg_config(self, *arguments):
        return run(["pkg-config", *arguments], env=self.packages).split()

    def test_each_component_has_its_files_and_no_others(self):
        for component, patterns in COMPONENTS.items():
            patterns = [f"opt/qorix/{pattern}" for pattern in patterns]
            files = self.by_component[component]
            for pattern in patterns:
                self.assertTrue(any(fnmatch(file, pattern) for file in files), f"{component}: no {pattern}")
            for file in files:
                self.assertTrue(any(fnmatch(file, pattern) for pattern in patterns), f"{component}: {file}")

    def test_every_file_is_in_one_component(self):
        self.assertEqual(sorted(file for files in self.by_component.values() for file in files),
                         sorted(f"opt/qorix/{file}" for file in files_in(self.prefix)))

    def test_each_header_is_complete(self):
        headers = sorted(files_in(self.include))
        jobs = []
        for header in headers:
            # The C interface is made of GTK's types; everything else needs nothing but what is here.
            is_c = header == "qorix/qorix-gtk.h"
            flags = self.pkg_config("--cflags", "gtk+-3.0") if is_c else []
            for compiler in COMPILERS[".cpp"] + (COMPILERS[".c"] if is_c else []):
                jobs.append((compiler, [f"-I{self.include}", *flags], header))
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            faults = list(filter(None, pool.map(lambda job: compile_header(*job), jobs)))
        self.assertEqual("".join(faults), "")
        self.assertGreater(len(headers), 40)

    def test_all_public_headers_and_examples_are_there_and_nothing_else_of_them(self):
        self.assertEqual(files_in(self.include), files_in(Path(ROOT, "include")))
        self.assertEqual(files_in(self.prefix / "share/doc/qorix/examples"), {
            file for file in files_in(Path(ROOT, "examples"))
            if not file.endswith(("CMakeLists.txt", ".pyc"))})

    def test_nothing_names_the_place_where_it_was_built(self):
        folders = "|".join(path.name for path in Path(ROOT).iterdir() if path.is_dir())
        place = re.compile(f"{re.escape(os.path.realpath(ROOT))}/({folders})/".encode())
        for file in files_in(self.prefix):
            if not (self.prefix / file).is_symlink():
                self.assertFalse(place.search((self.prefix / file).read_bytes()), file)

    def test_pkg_config_leads_to_the_moved_files(self):
        flags = " ".join(self.pkg_config("--cflags", "--libs", "qorix-gtk3-2.0"))
        paths = re.findall(r"-[IL](\S*/elsewhere/\S*)", flags)
        self.assertEqual({os.path.realpath(path) for path in paths},
                         {str(self.include), str(self.prefix / "lib")})
        self.assertIn("-lqorix-gtk3 -lqorix", flags)
        self.assertIn("gtk-3.0", flags)

    def test_the_libraries_find_each_other(self):
        library = self.prefix / "lib/libqorix-gtk3.so.2"
        plain = {k: v for k, v in os.environ.items() if k != "LD_LIBRARY_PATH"}
        self.assertIn(f"libqorix.so.2 => {self.prefix}/lib/", run(["ldd", library], env=plain))

    def test_hosts_are_built_with_it_and_show_banners(self):
        run([sys.executable, "-B", HOSTS, "--prefix", self.prefix])

    def test_the_tools_run(self):
        document = self.prefix / "share/doc/qorix/examples/documents/commonad.xml"
        report = run([self.prefix / "bin/qorix-adcheck", "--all-hosts", document])
        self.assertIn("com.example.editor", report)

    def preview(self, command, **more):
        """What a preview without a display tells of the sample document."""
        document = self.prefix / "share/doc/qorix/examples/documents/commonad.xml"
        plain = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        plain["PATH"] = f"{self.prefix}/bin:{plain['PATH']}"
        return run([command, "--app", "com.example.editor", "--screenshot",
                    self.staging / "preview.png", document], env=plain, **more)

    def test_the_preview_finds_the_module_for_web_processes(self):
        self.assertRegex(self.preview(self.prefix / "bin/qorix-preview"), "bridge: .*promotes")

    def test_no_module_is_loaded_from_the_current_folder(self):
        here = self.staging / "here"
        (here / "qorix-gtk3-2").mkdir(parents=True)
        (here / "qorix-gtk3-2/qorix-webprocess.so").write_text("no module")
        (here / "qorix-preview").write_text("no program")
        self.assertRegex(self.preview("qorix-preview", cwd=here), "bridge: .*promotes")


if __name__ == "__main__":
    unittest.main()
