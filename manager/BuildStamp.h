#pragma once

namespace qorix {

/// When the library was built; cmake/BuildStamp.cmake writes them.
extern const char* const kBuildDate;  // "Jan  5 2024"
extern const char* const kBuildTime;  // "09:41:07"

}  // namespace qorix
