#include "platform/linux/PrivateFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

namespace qorix {

std::optional<PrivateFile> PrivateFile::create() {
  const char* folder = std::getenv("TMPDIR");
  std::string path = folder == nullptr || *folder == '\0' ? "/tmp" : folder;
  path += "/qorix-XXXXXX";
  const int descriptor = ::mkostemp(path.data(), O_CLOEXEC);
  if (descriptor < 0) {
    return std::nullopt;
  }
  ::unlink(path.c_str());
  return PrivateFile(descriptor);
}

PrivateFile::PrivateFile(PrivateFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

PrivateFile& PrivateFile::operator=(PrivateFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

PrivateFile::~PrivateFile() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

bool PrivateFile::append(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) {
      return false;
    }
    bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  return true;
}

Url PrivateFile::url() const {
  // Each opening starts at the beginning and has a position of its own.
  return Url::fileUrl("/proc/self/fd/" + std::to_string(descriptor_));
}

}  // namespace qorix
