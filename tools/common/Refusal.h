#pragma once

#include <optional>
#include <string>

#include "definition/AdReader.h"
#include "tools/common/SourceDocument.h"

namespace qorix::tools {

/// Why a host refuses a document.
struct Refusal {
  int line = 0;  // the number that the host logs
  std::size_t offset = 0;
  std::string words;
};

/// What a defect is, in plain words.
std::string wordsFor(const AdReading::Defect& defect);

/// How the host `app` reads the document.
struct HostReading {
  AdReading reading;
  std::optional<Refusal> refusal;
};
HostReading readForHost(const SourceDocument& source, const std::optional<std::string>& app);

}  // namespace qorix::tools
