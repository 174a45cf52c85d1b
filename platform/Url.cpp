#include "platform/Url.h"

#include <uriparser/Uri.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <vector>

namespace qorix {

namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
  return std::ranges::equal(text, lowerCase, [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == b;
  });
}

std::string_view textOf(const UriTextRangeA& range) {
  return range.first == nullptr ? std::string_view()
                                : std::string_view(range.first, range.afterLast);
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
  UriUriA uri;
  if (uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), nullptr) != URI_SUCCESS) {
    return std::nullopt;
  }
  const std::unique_ptr<UriUriA, decltype(&uriFreeUriMembersA)> owner(&uri, &uriFreeUriMembersA);
  const std::string_view scheme = textOf(uri.scheme);
  const bool isHttp = equalsIgnoringCase(scheme, "http") || equalsIgnoringCase(scheme, "https");
  if (scheme.empty() || (isHttp && textOf(uri.hostText).empty())) {
    return std::nullopt;
  }
  return Url(std::string(text));
}

Url Url::fileUrl(std::string_view path) {
  // A byte becomes at most three, after "file://" and before the terminating NUL.
  std::vector<char> text(7 + 3 * path.size() + 1);
  uriUnixFilenameToUriStringA(std::string(path).c_str(), text.data());
  return Url(std::string(text.data()));
}

std::optional<std::string> Url::filePath() const {
  if (!equalsIgnoringCase(scheme(), "file")) {
    return std::nullopt;
  }
  std::vector<char> path(text_.size() + 1);
  uriUriStringToUnixFilenameA(text_.c_str(), path.data());
  return std::string(path.data());
}

Url Url::fromWebEngine(std::string text) { return Url(std::move(text)); }

std::string_view Url::scheme() const {
  const auto end = text_.find(':');
  return end == std::string::npos ? std::string_view() : std::string_view(text_).substr(0, end);
}

std::optional<std::string_view> Url::query() const {
  const std::string_view beforeFragment = std::string_view(text_).substr(0, text_.find('#'));
  const auto mark = beforeFragment.find('?');
  return mark == std::string_view::npos ? std::nullopt
                                        : std::optional(beforeFragment.substr(mark + 1));
}

}  // namespace qorix
