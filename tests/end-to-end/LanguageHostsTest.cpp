#include <gmock/gmock.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Documents.h"
#include "support/LoopbackServer.h"
#include "support/Screen.h"
#include "support/TemporaryFolder.h"

namespace qorix::test {

namespace {

using ::testing::UnorderedElementsAre;

constexpr const char* kDocumentPath = "/ads.xml";
constexpr Pixel kBannerColor{255, 0, 170};
constexpr const char* kCloseControl =
    "<!DOCTYPE html><body style='margin:0'><a id='cocoa_close_web' href='https://a.example/close' "
    "style='display:block;height:100vh;background:#ff00aa'></a>";

/// A host in one language.
struct Language {
  std::string name;
  /// The command that makes the program "host" in the current folder; empty if there is none.
  std::string compile;
  /// The program, to which a host's arguments are added; "host" is the compiled one.
  std::vector<std::string> command;
};

void PrintTo(const Language& language, std::ostream* out) { *out << language.name; }

std::string source(const std::string& name) { return std::string(QORIX_HOSTS "/") + name; }

// The flags are those that the package files of the installed library give.
const std::vector<Language> kLanguages{
    {"C",
     std::string(QORIX_C_COMPILER " -std=c99 -Wall -Wpedantic -Werror ") + source("c/host.c") +
         " -o host -I" QORIX_INCLUDE " $(pkg-config --cflags --libs gtk+-3.0) -L" QORIX_LIBRARIES
         " -lqorix-gtk3",
     {"host"}},
    {"Vala",
     "valac --vapidir " QORIX_INTROSPECTION " --pkg qorix-gtk3-2.0 -X -I" QORIX_INCLUDE
     " -X -L" QORIX_LIBRARIES " -X -lqorix-gtk3 -X -w -o host " +
         source("vala/host.vala"),
     {"host"}},
    {"Python", "", {"/usr/bin/python3", "-B", source("python/host.py")}},
    {"JavaScript", "", {"/usr/bin/gjs", source("javascript/host.js")}},
};

/// A running host, and what it prints.
class LanguageHost : public ChildProcess {
 public:
  using ChildProcess::ChildProcess;

  /// Waits for the line. Returns false if it does not come in time.
  bool waitForLine(const std::string& line) {
    return waitFor([&] { return std::ranges::find(lines_, line) != lines_.end(); }, kPatience);
  }
  const std::vector<std::string>& lines() const { return lines_; }

 protected:
  void takeLine(const std::string& line) override { lines_.push_back(line); }

 private:
  std::vector<std::string> lines_;
};

class LanguageHostsTest : public ::testing::TestWithParam<Language> {
 protected:
  LanguageHostsTest() {
    setenv("GI_TYPELIB_PATH", QORIX_INTROSPECTION, 1);
    setenv("LD_LIBRARY_PATH", QORIX_LIBRARIES, 1);
    server_.setAnswer(
        kDocumentPath,
        {.body = {makeDocument(
             {.width = "300",
              .height = "60",
              .html = element("default", "<![CDATA[" + std::string(kCloseControl) + "]]>")})}});
  }

  std::vector<std::string> command() const {
    std::vector<std::string> command = GetParam().command;
    if (command[0] == "host") {
      command[0] = folder_ / "host";
    }
    command.push_back(server_.url(kDocumentPath));
    command.push_back(folder_ / "settings");
    return command;
  }

  LoopbackServer server_;
  const TemporaryFolder folder_;
};

}  // namespace

TEST_P(LanguageHostsTest, showsABannerAndHearsTheClick) {
  if (!GetParam().compile.empty()) {
    const std::string compile = "cd " + folder_.path().string() + " && " + GetParam().compile;
    ASSERT_EQ(std::system(compile.c_str()), 0) << compile;
  }
  LanguageHost host(command());
  EXPECT_TRUE(host.waitForLine("will-show 12 banner 300x60"));
  const PixelBox box = waitForColor(kBannerColor, 300, 60);
  ASSERT_EQ(box.width, 300) << testing::PrintToString(host.log());
  ASSERT_EQ(box.height, 60);

  clickAt(box.x + 150, box.y + 30);
  EXPECT_TRUE(host.waitForLine("did-close 12"));
  EXPECT_TRUE(host.waitForLine("triggering-navigation {(idName is cocoa_close_web)}"));
  EXPECT_EQ(waitForColor(kBannerColor, 0, 0).width, 0);

  // As a user closes the window.
  ASSERT_EQ(std::system(("wmctrl -F -c 'Host in " + GetParam().name + "'").c_str()), 0);
  EXPECT_TRUE(host.waitForEnd());
  EXPECT_TRUE(WIFEXITED(host.status()) && WEXITSTATUS(host.status()) == 0) << host.status();
  EXPECT_THAT(host.lines(),
              UnorderedElementsAre("will-show 12 banner 300x60", "did-close 12",
                                   "triggering-navigation {(idName is cocoa_close_web)}"));
  EXPECT_EQ(host.countLog("-WARNING **") + host.countLog("-CRITICAL **"), 0)
      << testing::PrintToString(host.log());
}

INSTANTIATE_TEST_SUITE_P(, LanguageHostsTest, testing::ValuesIn(kLanguages),
                         [](const auto& language) { return language.param.name; });

}  // namespace qorix::test
