#pragma once

// Platform: values and ports.

#include <cstdint>
#include <string>

namespace qorix {

/// Why an asynchronous operation failed. Passed between the library's own objects, never thrown.
struct Error {
  /// Who reports it: a subsystem's name ("curl"), or the whole message for the library's own
  /// errors.
  std::string domain;
  /// The domain's own number for the fault.
  std::int64_t code = 0;
  /// For people; empty when the domain says it all.
  std::string description;
};

}  // namespace qorix
