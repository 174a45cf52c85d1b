#include <filesystem>
#include <fstream>

#include "platform/linux/UserFolders.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

/// A desktop on which a program of the test's opens some schemes: it writes down what it gets.
class WorkspaceTest : public GtkTest {
 protected:
  WorkspaceTest() {
    const std::filesystem::path applications =
        std::filesystem::path(userDataFolder()) / "applications";
    std::filesystem::create_directories(applications);
    const auto program = applications / "open.sh";
    std::ofstream(program) << "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" << arrivals_.string()
                           << "'\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::ofstream(applications / "open.desktop")
        << "[Desktop Entry]\nType=Application\nName=Open\nExec=" << program.string()
        << " %u\nMimeType=x-scheme-handler/https;x-scheme-handler/macappstore;"
           "x-scheme-handler/qorixtest;\n";
    std::filesystem::create_directories(userConfigurationFolder());
    std::ofstream(std::filesystem::path(userConfigurationFolder()) / "mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/https=open.desktop\n"
           "x-scheme-handler/macappstore=open.desktop\nx-scheme-handler/qorixtest=open.desktop\n";
  }

  std::string arrived() const {
    std::ifstream file(arrivals_);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const std::filesystem::path arrivals_ = std::filesystem::path(userDataFolder()) / "arrivals";
};

}  // namespace

TEST_F(WorkspaceTest, handsTheExactAddressToTheHandlerOfItsScheme) {
  const std::vector<std::string> addresses = {
      "https://example.com/more?a=1&zamopenout=1&q=%20%41'\"#top",
      "macappstore://apps.example.com/app/id1?mt=12&LS=1", "qorixtest:anything|at;all$HOME"};
  std::string expected;
  for (const auto& address : addresses) {
    platform().workspace->openUrl(Url::fromWebEngine(address));
    expected += address + "\n";
    EXPECT_TRUE(waitFor([&] { return arrived() == expected; })) << arrived();
  }
}

TEST_F(WorkspaceTest, anAddressThatNothingOpensIsDroppedSilently) {
  platform().workspace->openUrl(Url::fromWebEngine("nobody-opens-this:x"));
  platform().workspace->openUrl(Url::fromWebEngine("no address at all"));
  platform().workspace->openUrl(Url::fromWebEngine(""));
  platform().workspace->openUrl(Url::fromWebEngine("qorixtest:after"));
  EXPECT_TRUE(waitFor([&] { return arrived() == "qorixtest:after\n"; }));
  EXPECT_TRUE(log->lines().empty());
}

}  // namespace qorix::test
