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

TEST(StandardErrorLogTest, leavesEveryOtherTextAlone) {
  const std::string text = "\"\\n\" 100% \xC2\xA9 \xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80 \xC2";
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
