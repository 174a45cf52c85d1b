#include "webview/OpeningLimit.h"

#include <algorithm>
#include <array>
#include <utility>

#include "text/AsciiCase.h"

namespace qorix {

namespace {

// Sorted. Schemes of the engine's own pages, those under which desktops reach files and settings,
// and those whose programs run what they are given.
constexpr std::array<std::string_view, 32> kClosedSchemes = {
    "about", "admin",    "afc",      "afp",        "archive",  "blob",       "burn",
    "cdda",  "computer", "data",     "dav",        "davs",     "file",       "filesystem",
    "ghelp", "gphoto2",  "help",     "info",       "jar",      "javascript", "man",
    "mtp",   "network",  "nfs",      "recent",     "resource", "sftp",       "smb",
    "ssh",   "trash",    "vbscript", "view-source"};

static_assert(std::ranges::is_sorted(kClosedSchemes));

}  // namespace

OpeningLimit::Answer OpeningLimit::ask(double now) {
  const bool isTooFast = times_.size() == kPerSecond && now - times_.front() < 1;
  if (opened_ == kPerPage || isTooFast) {
    return std::exchange(hasRefused_, true) ? Answer::refuse : Answer::refuseFirst;
  }
  ++opened_;
  times_.push_back(now);
  if (times_.size() > kPerSecond) {
    times_.pop_front();
  }
  return Answer::open;
}

bool mayBeOpened(std::string_view scheme) {
  return !std::ranges::binary_search(kClosedSchemes, asciiLower(scheme));
}

}  // namespace qorix
