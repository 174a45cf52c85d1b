#pragma once

#include <cstdlib>
#include <locale>
#include <stdexcept>
#include <string>

#include "support/TemporaryFolder.h"

namespace qorix {

/// Sets the locale of the whole process, as a host does that uses its user's locale. "tr_TR" has
/// special letters, "de_DE" writes fractions with a comma, "ps_AF" with a character of two bytes.
/// The locale is compiled into a temporary folder, because a machine has few of them.
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
