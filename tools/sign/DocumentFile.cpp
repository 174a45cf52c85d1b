#include "tools/sign/DocumentFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/common/Streams.h"

namespace qorix::tools::sign {

namespace {

mode_t usualMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

std::optional<std::string> replaceFile(const std::string& name, const std::string& text) {
  std::error_code isNew;
  const auto target = std::filesystem::canonical(name, isNew);  // what a link leads to
  const std::string file = isNew ? name : target.string();
  struct stat status {};
  if (!isNew && ::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    return "it is no ordinary file";
  }
  const mode_t mode = isNew ? usualMode() : status.st_mode & 07777;
  std::string temporary = file + ".XXXXXX";
  const int descriptor = ::mkstemp(temporary.data());
  if (descriptor < 0) {
    return std::strerror(errno);
  }
  const bool isWritten = writeAll(descriptor, text) && ::fchmod(descriptor, mode) == 0 &&
                         ::fsync(descriptor) == 0 && ::rename(temporary.c_str(), file.c_str()) == 0;
  const std::string fault = std::strerror(errno);
  ::close(descriptor);
  if (!isWritten) {
    ::unlink(temporary.c_str());
    return fault;
  }
  return std::nullopt;
}

}  // namespace qorix::tools::sign
