#include <uriparser/Uri.h>

#include <algorithm>
#include <vector>

#include <qorix/platform/Url.h>

#include "text/AsciiCase.h"

namespace qorix {

namespace {

bool isScheme(std::string_view text) {
  return !text.empty() && isAsciiLetter(text.front()) && std::ranges::all_of(text, [](char c) {
    return isAsciiLetter(c) || isAsciiDigit(c) || c == '+' || c == '-' || c == '.';
  });
}

std::string_view textOf(const UriTextRangeA& range) {
  return range.first == nullptr ? std::string_view()
                                : std::string_view(range.first, range.afterLast);
}

/// A text by the strict grammar. Its parts point into the text.
class Parts {
 public:
  explicit Parts(std::string_view text)
      : isValid_(uriParseSingleUriExA(&uri_, text.data(), text.data() + text.size(), nullptr) ==
                 URI_SUCCESS) {}
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;
  ~Parts() {
    if (isValid_) {
      uriFreeUriMembersA(&uri_);
    }
  }

  bool isValid() const { return isValid_; }
  std::string_view host() const { return isValid_ ? textOf(uri_.hostText) : std::string_view(); }

 private:
  UriUriA uri_{};
  const bool isValid_;
};

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
  return text.empty() || !Parts(text).isValid() ? std::nullopt
                                                : std::optional(Url(std::string(text)));
}

Url Url::fileUrl(std::string_view path) {
  // A byte becomes at most three, after "file://" and before the terminating NUL.
  std::vector<char> text(7 + 3 * path.size() + 1);
  uriUnixFilenameToUriStringA(std::string(path).c_str(), text.data());
  return Url(std::string(text.data()));
}

std::optional<std::string> Url::filePath() const {
  if (!equalIgnoringCase(scheme(), "file")) {
    return std::nullopt;
  }
  // The library knows the scheme in lower case only.
  const std::string text = asciiLower(scheme()) + text_.substr(scheme().size());
  std::vector<char> path(text.size() + 1);
  uriUriStringToUnixFilenameA(text.c_str(), path.data());
  return std::string(path.data());
}

Url Url::fromWebEngine(std::string text) { return Url(std::move(text)); }

std::string_view Url::scheme() const {
  const auto end = text_.find(':');
  return end == std::string::npos ? std::string_view() : std::string_view(text_).substr(0, end);
}

std::string_view Url::host() const { return Parts(text_).host(); }

std::optional<std::string_view> Url::query() const {
  const auto afterScheme = scheme().size() + 1;
  if (isScheme(scheme()) && !std::string_view(text_).substr(afterScheme).starts_with('/')) {
    return std::nullopt;
  }
  const std::string_view beforeFragment = std::string_view(text_).substr(0, text_.find('#'));
  const auto mark = beforeFragment.find('?');
  return mark == std::string_view::npos ? std::nullopt
                                        : std::optional(beforeFragment.substr(mark + 1));
}

}  // namespace qorix
