#include <gmock/gmock.h>

#include <cstdint>
#include <limits>

#include "support/Locale.h"
#include "tools/common/CommandLine.h"

namespace qorix::tools {
namespace {

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;

/// What a program makes of a command line.
struct Values {
  std::optional<std::string> text;
  std::optional<std::int64_t> number;
  std::optional<double> seconds;
  std::vector<std::string> languages;
  int width = 1;
  int height = 2;
  bool isOn = false;
  std::string file;
};

Values parse(std::vector<std::string> arguments) {
  Values values;
  CommandLine line("the-program", "Does something.");
  line.add_option("FILE", values.file, "What to read")->required();
  line.addText("--text", values.text, "TEXT", "A text");
  using Limits = std::numeric_limits<std::int64_t>;
  line.addNumber("--number", values.number, Limits::min(), Limits::max(), "N", "A number");
  line.addNumber("--seconds", values.seconds, 0.0, 1e6, "S", "A time");
  line.addLanguages(values.languages, "Languages");
  line.addViewSize(values.width, values.height, 1000, "A size");
  line.addSwitch("--on", values.isOn, "A switch");
  arguments.insert(arguments.begin(), "the-program");
  std::vector<char*> pointers;
  pointers.reserve(arguments.size());
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  line.parseOrExit(static_cast<int>(pointers.size()), pointers.data());
  return values;
}

TEST(CommandLineTest, readsWhatIsGiven) {
  const Values values = parse({"--text", "", "file", "--number=-9223372036854775808", "--seconds",
                               "1.5", "--view-size", "10x1000", "--on"});
  EXPECT_EQ(values.file, "file");
  EXPECT_EQ(values.text, "");
  EXPECT_EQ(values.number, std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(values.seconds, 1.5);
  EXPECT_EQ(values.width, 10);
  EXPECT_EQ(values.height, 1000);
  EXPECT_TRUE(values.isOn);
}

TEST(CommandLineTest, whatIsNotGivenStaysAsItIs) {
  const Values values = parse({"file"});
  EXPECT_EQ(values.text, std::nullopt);
  EXPECT_EQ(values.number, std::nullopt);
  EXPECT_EQ(values.seconds, std::nullopt);
  EXPECT_THAT(values.languages, IsEmpty());
  EXPECT_EQ(values.width, 1);
  EXPECT_FALSE(values.isOn);
}

TEST(CommandLineTest, theLastOfAnOptionCounts) {
  EXPECT_EQ(parse({"--text", "a", "--text=b", "file"}).text, "b");
}

TEST(CommandLineTest, aValueMayBeginWithADash) {
  EXPECT_EQ(parse({"--text", "--on", "file"}).text, "--on");
  EXPECT_EQ(parse({"--number", "-7", "file"}).number, -7);
  EXPECT_EQ(parse({"--", "--file"}).file, "--file");
  EXPECT_EQ(parse({"-"}).file, "-");
}

TEST(CommandLineTest, languagesAreSeparatedByCommas) {
  EXPECT_THAT(parse({"--languages", " de-AT ,,en, ", "file"}).languages,
              ElementsAre("de-AT", "en"));
  EXPECT_THAT(parse({"--languages", "", "file"}).languages, IsEmpty());
}

TEST(CommandLineTest, numbersAreReadTheSameInEveryLocale) {
  const LocaleInUse locale("de_DE");
  EXPECT_EQ(parse({"--seconds", "1.5", "file"}).seconds, 1.5);
}

TEST(CommandLineTest, refusesValuesThatMakeNoSense) {
  const auto expectRefused = [](const std::string& option, const std::string& value) {
    EXPECT_EXIT(parse({option, value, "file"}), ExitedWithCode(2),
                "^the-program: " + option + ": cannot be '" + value + "'.*\nTry --help.\n$");
  };
  for (const auto* number : {"", "x", "1x", " 1", "1.5", "0x10", "9223372036854775808"}) {
    expectRefused("--number", number);
  }
  for (const auto* seconds : {"nan", "inf", "-1", "1000001", "1,5"}) {
    expectRefused("--seconds", seconds);
  }
  for (const auto* size : {"", "800", "800x", "x600", "0x600", "8x-1", "8x6x2", "1001x1"}) {
    expectRefused("--view-size", size);
  }
}

TEST(CommandLineTest, refusesCommandLinesThatMakeNoSense) {
  EXPECT_EXIT(parse({}), ExitedWithCode(2), "^the-program: FILE is required\nTry --help.\n$");
  EXPECT_EXIT(parse({"a", "b"}), ExitedWithCode(2), "not expected: b\n");
  EXPECT_EXIT(parse({"a", "--frob"}), ExitedWithCode(2), "not expected: --frob\n");
  EXPECT_EXIT(parse({"a", "--text"}), ExitedWithCode(2), "--text: 1 required TEXT missing\n");
  EXPECT_EXIT(parse({"a", "--on=no"}), ExitedWithCode(2), "on was given a disallowed flag");
}

TEST(CommandLineTest, helpNeedsNothingElse) {
  EXPECT_EXIT(parse({"--help"}), ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace qorix::tools
