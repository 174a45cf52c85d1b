#pragma once

#include <cstdlib>
#include <locale>
#include <stdexcept>
#include <string>

#include "support/TemporaryFolder.h"

namespace qorix {

/// The whole process speaks another language meanwhile, as a host's does that has asked for its
/// user's: "tr_TR" has letters of its own, "de_DE" writes fractions with a comma, "ps_AF" with a
/// character of two bytes. Made for the occasion in a folder of its own: a machine has few of them.
class LocaleInUse {
 public:
  explicit LocaleInUse(const std::string& name) {
    const std::string full = name + ".UTF-8";
    const std::string command = "localedef -f UTF-8 -i " + name + " '" + (folder_ / full) + "'";
    if (std::system(command.c_str()) != 0) {
      throw std::runtime_error("cannot be made: " + command);
    }
    ::setenv("LOCPATH", folder_.path().c_str(), 1);
    std::locale::global(std::locale(full));  // the C library's, too
  }
  LocaleInUse(const LocaleInUse&) = delete;
  LocaleInUse& operator=(const LocaleInUse&) = delete;
  ~LocaleInUse() {
    std::locale::global(std::locale::classic());
    ::unsetenv("LOCPATH");
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace qorix
