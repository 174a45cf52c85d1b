#pragma once

#include <optional>
#include <set>
#include <string>

#include "definition/differential/Reading.h"

namespace qorix {

/// The machine that a document is read on.
struct Machine {
  enum class Folder { there, unreadable, missing };

  std::optional<std::string> host;
  Folder folder = Folder::there;
  std::set<std::string> installed;  // names of applications, without ".app"
};

/// Reads a document as hosts promise to, by other means: libxml2's tree, XPath, a JSON reader of
/// its own. Knows nothing of the library's own reader.
Reading readAgain(const std::string& document, const Machine& machine);

/// Whether the document touches a known limit of the library or a known fault of libxml2. The
/// source has a rule for each.
bool isBeyondSecondReader(const std::string& document);

}  // namespace qorix
