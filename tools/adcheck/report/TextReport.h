#pragma once

#include <string>

#include "tools/adcheck/Options.h"

namespace qorix::tools::adcheck {

/// A report for people, whether the document is refused, and whether it has warnings.
struct TextReport {
  std::string text;
  bool isRefused = false;
  bool hasWarnings = false;
};

/// What the host of the options gets from the document, why, and what is odd about the document.
/// `isColoured`: with the escape sequences of terminals.
TextReport reportText(const std::string& document, const Options& options, bool isColoured);

}  // namespace qorix::tools::adcheck
