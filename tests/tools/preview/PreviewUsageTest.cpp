#include "tools/preview/PreviewFixture.h"

namespace qorix::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class PreviewUsageTest : public PreviewFixture {
 protected:
  static void expectRefused(const std::vector<std::string>& arguments, const std::string& because) {
    PreviewProcess preview(arguments);
    EXPECT_EQ(preview.exitStatus(), 2);
    EXPECT_THAT(preview.lines(), IsEmpty());
    EXPECT_GE(preview.countLog(because), 1) << because;
    ASSERT_THAT(preview.log(), Not(IsEmpty()));
    EXPECT_THAT(preview.log().front(), HasSubstr("qorix-preview: "));
  }
};

TEST_F(PreviewUsageTest, refusesWhatItDoesNotUnderstand) {
  write(document({}));
  expectRefused({}, "FILE is required");
  expectRefused({file_, "second.xml"}, "not expected: second.xml");
  expectRefused({""}, "FILE: cannot be empty");
  expectRefused({"--colour", file_}, "--colour");
  expectRefused({"--app", "", file_}, "--app: cannot be empty");
  expectRefused({file_, "--app"}, "--app");
  expectRefused({"--languages", ",", file_}, "--languages: needs a language");
  expectRefused({"--view-size", "800", file_}, "800x600");
  expectRefused({"--view-size", "0x600", file_}, "'0x600'");
  expectRefused({"--quit-after", "nan", file_}, "'nan'");
  expectRefused({"--quit-after", "-1", file_}, "'-1'");
}

TEST_F(PreviewUsageTest, aFileThatCannotBeReadIsRefused) {
  expectRefused({folder_ / "nowhere.xml"}, "No such file");
  expectRefused({folder_.path().string()}, "directory");
}

TEST_F(PreviewUsageTest, sayingThatThereIsNoDisplay) {
  write(document({}));
  PreviewProcess preview(arguments(), {"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY"});
  EXPECT_EQ(preview.exitStatus(), 1);
  EXPECT_EQ(preview.countLog("there is no display"), 1);
}

TEST_F(PreviewUsageTest, explainsItself) {
  const std::string program = QORIX_PREVIEW;
  const std::string help = outputOf(program + " --help");
  for (const char* option : {"--app", "--languages", "--applications", "--view-size", "--anyway",
                             "--open", "--screenshot", "--quit-after", "--help", "--version"}) {
    EXPECT_THAT(help, HasSubstr(std::string("\n  ") + option));
  }
  EXPECT_THAT(outputOf(program + " --version"), StartsWith("qorix-preview (QORIX) "));
}

}  // namespace
}  // namespace qorix::test
