#include "tools/common/Streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

namespace qorix::tools {

std::optional<std::string> readAll(int descriptor) {
  constexpr std::size_t kPiece = std::size_t{1} << 16;
  constexpr std::size_t kLargest = std::size_t{256} << 20;  // endless devices are files, too
  std::string text;
  std::array<char, kPiece> piece{};
  for (;;) {
    const ssize_t count = ::read(descriptor, piece.data(), piece.size());
    if (count > 0) {
      text.append(piece.data(), static_cast<std::size_t>(count));
      if (text.size() > kLargest) {
        errno = EFBIG;
        return std::nullopt;
      }
    } else if (count == 0) {
      return text;
    } else if (errno != EINTR) {
      return std::nullopt;
    }
  }
}

std::optional<std::string> readFile(const std::string& name) {
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return std::nullopt;
  }
  auto text = readAll(descriptor);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return text;
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool writeOutput(std::string_view text) { return writeAll(STDOUT_FILENO, text); }

}  // namespace qorix::tools
