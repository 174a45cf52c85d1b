#include "platform/linux/StandardErrorLog.h"

#include <errno.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "platform/linux/Hexadecimal.h"

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

void appendEscape(std::string& text, char c) {
  text += "\\x";
  appendHexadecimal(text, c);
}

bool isControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

/// Whether U+0080 to U+009F come next, two bytes in UTF-8: terminals obey them as well.
bool isSecondControl(std::string_view rest) {
  return rest.size() > 1 && rest[0] == '\xC2' && static_cast<unsigned char>(rest[1]) < 0xA0;
}

}  // namespace

std::string escapedForLog(std::string_view message) {
  std::string text;
  text.reserve(message.size());
  for (std::size_t i = 0; i < message.size(); ++i) {
    const auto byte = static_cast<unsigned char>(message[i]);
    if (byte == '\n') {
      text += "\\n";
    } else if (byte == '\t') {
      text += "\\t";
    } else if (byte == '\r') {
      text += "\\r";
    } else if (isControl(byte)) {
      appendEscape(text, message[i]);
    } else if (isSecondControl(message.substr(i))) {
      appendEscape(text, message[i]);
      appendEscape(text, message[++i]);
    } else {
      text += message[i];
    }
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
