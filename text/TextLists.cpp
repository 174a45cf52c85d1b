#include "text/TextLists.h"

namespace qorix {

namespace {

// What is trimmed: the tab and Unicode's space separators, but no line breaks. GLib knows the
// separators, too, but walks from either end through well-formed UTF-8 only, which a page's list
// need not be.
constexpr std::string_view kBlanks[] = {
    "\t",     " ",      "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004",
    "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000",
};

std::string_view trimmed(std::string_view text) {
  for (bool changed = true; changed;) {
    changed = false;
    for (const std::string_view blank : kBlanks) {
      if (text.starts_with(blank)) {
        text.remove_prefix(blank.size());
        changed = true;
      }
      if (text.ends_with(blank)) {
        text.remove_suffix(blank.size());
        changed = true;
      }
    }
  }
  return text;
}

}  // namespace

std::vector<std::string> splitAtCommas(std::string_view text) {
  std::vector<std::string> items;
  for (;;) {
    const auto comma = text.find(',');
    const std::string_view item = trimmed(text.substr(0, comma));
    if (!item.empty()) {
      items.emplace_back(item);
    }
    if (comma == std::string_view::npos) {
      return items;
    }
    text.remove_prefix(comma + 1);
  }
}

}  // namespace qorix
