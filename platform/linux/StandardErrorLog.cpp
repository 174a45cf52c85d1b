#include "platform/linux/StandardErrorLog.h"

#include <errno.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "platform/linux/Hexadecimal.h"
#include "text/HiddenCharacters.h"

namespace qorix {

namespace {

std::string timeStampAndProcess() {
  timespec now{};
  tm local{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  ::localtime_r(&now.tv_sec, &local);
  std::array<char, 32> day{};
  std::strftime(day.data(), day.size(), "%Y-%m-%d %H:%M:%S", &local);
  std::array<char, 64> rest{};
  std::snprintf(rest.data(), rest.size(), ".%03ld ", now.tv_nsec / 1'000'000);
  return std::string(day.data()) + rest.data() + program_invocation_short_name + '[' +
         std::to_string(::getpid()) + "] ";
}

void appendEscapes(std::string& text, std::string_view bytes) {
  for (const char c : bytes) {
    text += "\\x";
    appendHexadecimal(text, c);
  }
}

}  // namespace

std::string escapedForLog(std::string_view message) {
  std::string text;
  text.reserve(message.size());
  while (!message.empty()) {
    const auto [size, isHidden] = leadingCharacter(message);
    const std::string_view character = message.substr(0, size);
    if (character == "\n") {
      text += "\\n";
    } else if (character == "\t") {
      text += "\\t";
    } else if (character == "\r") {
      text += "\\r";
    } else if (isHidden) {
      appendEscapes(text, character);
    } else {
      text += character;
    }
    message.remove_prefix(size);
  }
  return text;
}

void StandardErrorLog::write(std::string_view message) {
  const std::string line = timeStampAndProcess() + escapedForLog(message) + '\n';
  const std::lock_guard lock(mutex_);
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t count = ::write(STDERR_FILENO, rest.data(), rest.size());
    if (count < 0 && errno != EINTR) {
      return;
    }
    rest.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
}

}  // namespace qorix
