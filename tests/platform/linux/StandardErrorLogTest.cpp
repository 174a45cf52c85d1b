#include <gmock/gmock.h>
#include <unistd.h>

#include <sstream>
#include <thread>
#include <vector>

#include "platform/linux/StandardErrorLog.h"

namespace qorix {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST(StandardErrorLogTest, writesTimeAndProcessBeforeTheMessage) {
  CaptureStderr();
  StandardErrorLog().write("ZAM dSuccess");
  const std::string process = "\\[" + std::to_string(::getpid()) + "\\]";
  EXPECT_THAT(GetCapturedStderr(), ::testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} "
                                                           "[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} "
                                                           "qorix-linux-tests" +
                                                           process + " ZAM dSuccess\n"));
}

TEST(StandardErrorLogTest, aMessageCannotLookLikeTwoLines) {
  CaptureStderr();
  StandardErrorLog().write("first\n2024-01-01 00:00:00.000 host[1] second\r\n");
  const auto lines = linesOf(GetCapturedStderr());
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_THAT(lines[0],
              ::testing::HasSubstr("first\\n2024-01-01 00:00:00.000 host[1] second\\r\\n"));
}

TEST(StandardErrorLogTest, writesControlCharactersOut) {
  EXPECT_EQ(escapedForLog(std::string("a\0b\x1B[31m\tc\x7F", 11)), "a\\x00b\\x1B[31m\\tc\\x7F");
  EXPECT_EQ(escapedForLog("next\xC2\x85line \xC2\x9B"), "next\\xC2\\x85line \\xC2\\x9B");
}

// They turn the text around, hide a part of it or, as some viewers have it, end the line.
TEST(StandardErrorLogTest, writesFormatCharactersOut) {
  EXPECT_EQ(escapedForLog("a\u202Eb"), "a\\xE2\\x80\\xAEb");
  for (const char* hidden :
       {"\u00AD", "\u061C", "\u200B", "\u200E", "\u200F", "\u2028", "\u2029", "\u202A", "\u2060",
        "\u2066", "\u2069", "\u206F", "\uFEFF", "\uFFF9", "\U000E0001", "\U000E0041"}) {
    EXPECT_THAT(escapedForLog(hidden), ::testing::MatchesRegex("(\\\\x[0-9A-F]{2})+"));
  }
}

TEST(StandardErrorLogTest, writesOutWhatIsNotUtf8) {
  EXPECT_EQ(escapedForLog("\x9B 31m \xC2"), "\\x9B 31m \\xC2");
  EXPECT_EQ(escapedForLog("\xE2\x80z \xED\xA0\x80 \xC0\x8A \xF5"),
            "\\xE2\\x80z \\xED\\xA0\\x80 \\xC0\\x8A \\xF5");
}

TEST(StandardErrorLogTest, leavesEveryOtherTextAlone) {
  const std::string text =
      "\"\\n\" 100% \u00A9 \u00E4\u4E2D\U0001F600 \u0645\u06CC\u200C\u062E \uFFFD";
  EXPECT_EQ(escapedForLog(text), text);
}

TEST(StandardErrorLogTest, linesOfSeveralThreadsStayWhole) {
  CaptureStderr();
  StandardErrorLog log;
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    threads.emplace_back([&log, letter] {
      for (int i = 0; i < 50; ++i) {
        log.write(std::string(10'000, letter));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const auto lines = linesOf(GetCapturedStderr());
  ASSERT_EQ(lines.size(), 200U);
  for (const std::string& line : lines) {
    const std::string message = line.substr(line.rfind(' ') + 1);
    EXPECT_EQ(message, std::string(10'000, message.at(0)));
  }
}

}  // namespace
}  // namespace qorix
