#!/usr/bin/env python3
"""The checks of the house rules find what they are there to find: each is run on small bad trees."""

import json
import tempfile
import unittest
from pathlib import Path

import architecture
import every_test_is_built
import layering
import locale_free
import promises
import tests_map
import unfinished_work
import using_declarations


class Tree(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = Path(self.folder.name)

    def write(self, name, text=""):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


class House(Tree):
    """A tree with rooms."""

    def setUp(self):
        super().setUp()
        self.write("rooms.txt", """# lowest first
text
platform: text
definition: platform
sources: platform
webview: definition
manager: webview sources
platform/linux: platform
platform/gtk: platform/linux
platform/gtk/glib: manager platform/gtk
""")


class Layering(House):
    def setUp(self):
        super().setUp()
        self.write("include/qorix/Export.h")
        self.write("include/qorix/MyPushAdManager.h", "// For hosts.\n")
        self.write("include/qorix/MyPushAdInfo.h", "// Machinery: public for those who extend it.\n")
        self.write("include/qorix/platform/View.h", "// Platform: values and ports.\n")
        self.write("include/qorix/qorix-gtk.h", "/* For hosts. */\n")
        for name in (
            "text/Case.h",
            "platform/Guarded.h",
            "platform/linux/HttpSession.h",
            "platform/gtk/Views.h",
            "platform/gtk/glib/Manager.h",
            "definition/XmlTree.h",
            "definition/MyPushAdInfo+Reading.cpp",
            "sources/Body.h",
            "webview/Marks.h",
            "manager/Cache.h",
            "manager/MyPushAdManager.cpp",
            "tests/fakes/Clock.h",
        ):
            self.write(name)

    def assert_refused(self, name, include):
        before = (self.root / name).read_text() if (self.root / name).is_file() else ""
        self.write(name, f"{before}\n  #  include {include}\n")
        line = str(before.count("\n") + 2)
        self.assertEqual([f.split(":")[:2] for f in layering.faults(self.root)], [[name, line]])
        self.write(name, before)

    def assert_allowed(self, name, include):
        before = (self.root / name).read_text() if (self.root / name).is_file() else ""
        self.write(name, f"{before}\n#include {include}\n")
        self.assertEqual(list(layering.faults(self.root)), [])

    def test_an_empty_house_has_no_fault(self):
        self.assertEqual(list(layering.faults(self.root)), [])

    def test_toolkit_in_the_core(self):
        self.assert_refused("webview/Marks.cpp", "<gtk/gtk.h>")

    def test_toolkit_in_quotes(self):
        self.assert_refused("manager/Cache.cpp", '"gdk/gdk.h"')

    def test_web_engine_in_the_core(self):
        self.assert_refused("webview/Marks.cpp", "<webkit2/webkit2.h>")

    def test_toolkit_in_platform_linux(self):
        self.assert_refused("platform/linux/Log.cpp", "<gtk/gtk.h>")

    def test_toolkit_in_a_test_of_the_core(self):
        self.assert_refused("tests/manager/CacheTest.cpp", "<gtk/gtk.h>")

    def test_toolkit_in_a_tool_that_needs_no_display(self):
        self.assert_refused("tools/adcheck/main.cpp", "<gtk/gtk.h>")
        self.assert_refused("tools/common/Streams.cpp", "<gtk/gtk.h>")

    def test_toolkit_in_a_public_header(self):
        self.assert_refused("include/qorix/MyPushAdManager.h", "<gtk/gtk.h>")

    def test_glib_in_the_core(self):
        self.assert_refused("definition/XmlTree.cpp", "<glib.h>")

    def test_third_party_header_in_a_public_header(self):
        self.assert_refused("include/qorix/MyPushAdInfo.h", "<nlohmann/json.hpp>")
        self.assert_refused("include/qorix/platform/View.h", "<expat.h>")

    def test_private_header_in_a_public_header(self):
        self.assert_refused("include/qorix/MyPushAdInfo.h", '"definition/XmlTree.h"')

    def test_port_that_knows_the_machinery(self):
        self.assert_refused("include/qorix/platform/View.h", "<qorix/MyPushAdInfo.h>")

    def test_machinery_that_knows_the_hosts_part(self):
        self.assert_refused("include/qorix/MyPushAdInfo.h", "<qorix/MyPushAdManager.h>")

    def test_public_header_that_does_not_say_for_whom_it_is(self):
        self.write("include/qorix/MyPushAdInfo.h", "#pragma once\n")
        self.assertEqual(len(list(layering.faults(self.root))), 1)

    def test_public_header_that_is_not_written_as_one(self):
        self.assert_refused("manager/Cache.cpp", '"qorix/MyPushAdInfo.h"')

    def test_public_header_of_a_room_above(self):
        self.assert_refused("webview/Marks.cpp", "<qorix/MyPushAdManager.h>")
        self.assert_refused("sources/Body.cpp", "<qorix/MyPushAdInfo.h>")

    def test_public_header_that_does_not_exist(self):
        self.assert_refused("webview/Marks.cpp", "<qorix/MyPushAdMarks.h>")

    def test_definition_that_knows_sources(self):
        self.assert_refused("definition/XmlTree.cpp", '"sources/Body.h"')

    def test_every_arrow_upwards(self):
        self.assert_refused("text/Case.cpp", '"platform/Guarded.h"')
        self.assert_refused("definition/XmlTree.cpp", '"webview/Marks.h"')
        self.assert_refused("definition/XmlTree.cpp", '"manager/Cache.h"')
        self.assert_refused("webview/Marks.cpp", '"manager/Cache.h"')

    def test_core_that_knows_a_platform(self):
        self.assert_refused("manager/Cache.cpp", '"platform/gtk/Views.h"')
        self.assert_refused("manager/Cache.cpp", '"platform/linux/HttpSession.h"')

    def test_platform_that_knows_the_c_interface(self):
        self.assert_refused("platform/gtk/Views.cpp", '"platform/gtk/glib/Manager.h"')
        self.assert_refused("platform/gtk/Views.cpp", '"manager/Cache.h"')

    def test_third_party_header_in_the_c_interface(self):
        self.assert_refused("include/qorix/qorix-gtk.h", "<nlohmann/json.hpp>")
        self.assert_refused("include/qorix/qorix-gtk.h", '"platform/gtk/glib/Manager.h"')

    def test_relative_include(self):
        self.assert_refused("manager/Cache.cpp", '"../webview/Marks.h"')

    def test_what_is_allowed(self):
        self.assert_allowed("platform/gtk/Views.cpp", "<gtk/gtk.h>")
        self.assert_allowed("platform/gtk/glib/Manager.cpp", "<gtk/gtk.h>")
        self.assert_allowed("platform/gtk/glib/Manager.cpp", "<qorix/MyPushAdManager.h>")
        self.assert_allowed("include/qorix/qorix-gtk.h", "<gtk/gtk.h>")
        self.assert_allowed("platform/linux/Apps.cpp", "<gio/gio.h>")
        self.assert_allowed("include/qorix/platform/View.h", "<string_view>")
        self.assert_allowed("include/qorix/MyPushAdInfo.h", "<qorix/platform/View.h>")
        self.assert_allowed("include/qorix/MyPushAdManager.h", "<qorix/MyPushAdInfo.h>")
        self.assert_allowed("definition/XmlTree.cpp", "<expat.h>")
        self.assert_allowed("webview/Marks.cpp", "<qorix/MyPushAdInfo.h>")
        self.assert_allowed("manager/Cache.cpp", '"text/Case.h"')
        self.assert_allowed("manager/Cache.cpp", '"webview/Marks.h"')
        self.assert_allowed("tools/preview/main.cpp", "<gtk/gtk.h>")
        self.assert_allowed("tests/gtk/ViewsTest.cpp", "<gtk/gtk.h>")
        self.assert_allowed("tests/manager/CacheTest.cpp", '"fakes/Clock.h"')


class Architecture(House):
    ROWS = [
        "| `platform/gtk/glib/` | `manager/`, `platform/gtk/` | signals |",
        "| `platform/gtk/` | `platform/linux/` | windows |",
        "| `platform/linux/` | `platform/` | files |",
        "| `manager/` | `webview/`, `sources/` | requests |",
        "| `webview/` | `definition/` | pages |",
        "| `sources/` | `platform/` | downloads |",
        "| `definition/` | `platform/` | documents |",
        "| `platform/` | `text/` | services |",
        "| `text/` | | letters |",
    ]

    def found(self, rows):
        self.write("docs/architecture.md", "# Rooms\n\n" + "\n".join(rows) + "\n")
        return list(architecture.faults(self.root))

    def test_a_true_table(self):
        self.assertEqual(self.found(self.ROWS), [])

    def test_a_missing_room(self):
        self.assertEqual(len(self.found(self.ROWS[1:])), 1)

    def test_a_room_that_is_none(self):
        self.assertEqual(len(self.found(["| `cellar/` | | wine |", *self.ROWS])), 1)

    def test_a_room_that_knows_another(self):
        rows = [row.replace("`definition/` | pages", "`sources/` | pages") for row in self.ROWS]
        self.assertEqual(len(self.found(rows)), 1)

    def test_another_order(self):
        self.assertEqual(len(self.found([*self.ROWS[1:], self.ROWS[0]])), 1)


class EveryTestIsBuilt(House):
    def build(self, *names):
        commands = [{"directory": str(self.root), "file": name} for name in names]
        self.write("build/compile_commands.json", json.dumps(commands))

    def found(self):
        return list(every_test_is_built.faults(self.root, self.root / "build"))

    def test_a_test_that_no_target_builds(self):
        self.write("tests/a/OneTest.cpp")
        self.write("tests/a/TwoTest.cpp")
        self.build("tests/a/OneTest.cpp")
        self.assertEqual(self.found(), ["tests/a/TwoTest.cpp: no target builds it"])

    def test_a_source_that_no_target_builds(self):
        self.write("manager/Cache.cpp")
        self.build()
        self.assertEqual(self.found(), ["manager/Cache.cpp: no target builds it"])

    def test_a_source_that_is_compiled_in_a_group(self):
        self.write("tests/a/OneTest.cpp")
        self.write("tests/a/TwoTest.cpp")
        group = "build/tests/unity_0_cxx.cxx"
        self.write(group, f'#include "{self.root}/tests/a/OneTest.cpp"\n')
        self.build(group)
        self.assertEqual(self.found(), ["tests/a/TwoTest.cpp: no target builds it"])

    def test_a_benchmark_that_nobody_names(self):
        self.write("bench/ParserBench.cpp")
        self.write("bench/OtherBench.cpp")
        self.write("bench/CMakeLists.txt", "add_executable(qorix-bench-parser ParserBench.cpp)\n")
        self.build()
        self.assertEqual(self.found(), ["bench/OtherBench.cpp: no target builds it"])


class UnfinishedWork(Tree):
    def test_marks(self):
        for text in ("TO" + "DO: later", "FIX" + "ME", "TEST(A, DISABLED" + "_B)", "GTEST" + "_SKIP();"):
            self.write("docs/a.md", f"good\n{text}\n")
            self.assertEqual(list(unfinished_work.faults(self.root)), [f"docs/a.md:2: {text}"])

    def test_builds_and_git_are_passed_over(self):
        for folder in ("build", "build-x", ".git"):
            self.write(f"{folder}/a.cpp", "FIX" + "ME\n")
        self.assertEqual(list(unfinished_work.faults(self.root)), [])

    def test_ordinary_words(self):
        self.write("docs/a.md", "todo lists, hackers and what is disabled\n")
        self.assertEqual(list(unfinished_work.faults(self.root)), [])


class TestsMap(Tree):
    def setUp(self):
        super().setUp()
        self.write("include/qorix/Info.h")
        self.write("webview/Marks.h")
        self.write("tests/support/Clock.h")
        self.write("tests/webview/Page.h")

    def found(self, line):
        self.write("tests/webview/MarksTest.cpp", f"#include <string>\n{line}\n")
        return [f.split(":")[:2] for f in tests_map.faults(self.root)]

    def test_what_is_found_by_its_name(self):
        for line in (
            "TEST(MarksTest, a) {}",
            "TEST_F(MarksTest, a) {}",
            "TEST_P(MarksTest, a) {}",
            '#include "support/Clock.h"',
            '#include "webview/Page.h"',
            '#include "webview/Marks.h"',
            '#include "qorix/Info.h"',
        ):
            self.assertEqual(self.found(line), [])

    def test_what_is_not(self):
        for line in (
            "TEST(Marks, a) {}",
            "TEST_F(OtherTest, a) {}",
            "TEST_P(MarksTestToo, a) {}",
            '#include "Page.h"',
            '#include "../webview/Page.h"',
            '#include "support/Gone.h"',
        ):
            self.assertEqual(self.found(line), [["tests/webview/MarksTest.cpp", "2"]])


class LocaleFree(House):
    def found(self, line, name="webview/Marks.cpp"):
        self.write(name, f"#include <string>\n{line}\n")
        return list(locale_free.faults(self.root))

    def test_what_follows_the_locale(self):
        for line in (
            "c = std::tolower(c);",
            "all_of(text, ::isdigit);",
            "if (strcasecmp(a, b) == 0) {",
            "double d = std::stod(text);",
            "#include <cctype>",
        ):
            place = f"webview/Marks.cpp:2: {line}: follows the locale"
            self.assertEqual(self.found(line), [place])

    def test_what_does_not(self):
        for line in ("c = asciiLower(c);", "if (isDigit(c)) {", "// not as tolower does", "int top;"):
            self.assertEqual(self.found(line), [])

    def test_tests_are_free(self):
        self.assertEqual(self.found("std::toupper(c);", "tests/docs/GuideTest.cpp"), [])


class UsingDeclarations(Tree):
    def found(self, text):
        self.write("tests/a/SomeTest.cpp", f"#include <a>\n{text}")
        return list(using_declarations.faults(self.root))

    def test_a_name_that_is_not_used(self):
        fault = ["tests/a/SomeTest.cpp:2: IsEmpty is not used"]
        self.assertEqual(self.found("using ::testing::IsEmpty;\n"), fault)
        self.assertEqual(self.found("  using a::b::IsEmpty;\nint IsEmptyToo;\n"), fault)

    def test_a_name_that_is_used(self):
        self.assertEqual(self.found("using ::testing::IsEmpty;\nauto a = IsEmpty();\n"), [])

    def test_what_is_no_using_declaration(self):
        self.assertEqual(self.found("using namespace a::b;\nusing Json = a::Json;\n"), [])


class Promises(Tree):
    guide = "docs/testing.md"

    def faults_for(self, named):
        self.write("tests/a/SomeTest.cpp", "TEST_F(SomeTest, endsWell) {}\n")
        self.write("tests/a/CMakeLists.txt", "add_test(NAME tools.script COMMAND x)\n")
        self.write("bench/CMakeLists.txt", "qorix_add_bench(first Some.cpp)\nqorix_try_bench(second)\n")
        for guide in ("docs/testing.md", "docs/reliability.md"):
            self.write(guide, "")
        self.write(self.guide, f"| promise | tests |\n|---|---|\n| it holds | {named} |\n")
        return list(promises.faults(self.root))

    def test_a_test_that_exists(self):
        for named in ("`SomeTest`", "`SomeTest.endsWell`", "`SomeTest.ends…`, `Some…`", "`tools.script`", "`tools.…`",
                      "`bench.first`", "`bench.second`"):
            self.assertEqual(self.faults_for(named), [])

    def test_a_test_that_is_gone(self):
        for named in ("`OtherTest`", "`Some`", "`SomeTest.endsBadly`", "`SomeTest.ends`", "`tools.other`", "`bench.other`",
                      "`SomeTest`, `SomeTest.begins…`"):
            self.assertEqual(len(self.faults_for(named)), 1)


class PromisesUnderFaults(Promises):
    guide = "docs/reliability.md"


if __name__ == "__main__":
    unittest.main()
