#include "tools/adcheck/Streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <utility>

namespace qorix::adcheck {

namespace {

bool readAll(int descriptor, std::string& text) {
  constexpr std::size_t kPiece = std::size_t{1} << 16;
  constexpr std::size_t kLargest = std::size_t{256} << 20;  // endless devices are files, too
  std::array<char, kPiece> piece{};
  for (;;) {
    const ssize_t count = ::read(descriptor, piece.data(), piece.size());
    if (count > 0) {
      text.append(piece.data(), static_cast<std::size_t>(count));
      if (text.size() > kLargest) {
        errno = EFBIG;
        return false;
      }
    } else if (count == 0 || errno != EINTR) {
      return count == 0;
    }
  }
}

}  // namespace

std::optional<std::string> readFile(const std::string& name) {
  const bool isStandardInput = name == "-";
  const int descriptor =
      isStandardInput ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return std::nullopt;
  }
  std::string text;
  const bool isRead = readAll(descriptor, text);
  if (!isStandardInput) {
    const int error = errno;
    ::close(descriptor);
    errno = error;
  }
  return isRead ? std::optional(std::move(text)) : std::nullopt;
}

bool writeOutput(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace qorix::adcheck
