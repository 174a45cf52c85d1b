#pragma once

// Platform: values and ports.

#include <optional>
#include <string>
#include <string_view>

#include <qorix/Export.h>

namespace qorix {

/// An address, kept exactly as it was spelled. An immutable value; usable on any thread.
class QORIX_EXPORT Url {
 public:
  /// Reads `text` by the strict grammar of RFC 3986, which relative addresses ("commonad.xml") and
  /// those without a host ("https://") have as well: fetching them fails. Absent for anything else:
  /// an empty text, blanks, control characters, brackets outside a host.
  static std::optional<Url> parse(std::string_view text);

  /// The file URL of an absolute `path`, with every byte escaped that a URL cannot hold.
  static Url fileUrl(std::string_view path);

  /// The path that a file URL names, decoded. Absent for other URLs.
  std::optional<std::string> filePath() const;

  /// Takes over an address that a web engine has already made canonical. Engines keep characters
  /// that the strict grammar refuses ("|" in a query, say), so nothing is checked.
  static Url fromWebEngine(std::string text);

  /// The whole address as spelled.
  const std::string& absoluteString() const { return text_; }

  /// What precedes the first ":", as spelled; empty when there is none.
  std::string_view scheme() const;

  /// Where the address leads, as spelled, without brackets; empty when it does not say.
  std::string_view host() const;

  /// What lies between the first "?" and the "#" (or the end), not decoded. Absent without "?",
  /// and in an address that has no path, as "mailto:someone?subject=a".
  std::optional<std::string_view> query() const;

  /// Equal when spelled alike, letter by letter.
  bool operator==(const Url&) const = default;

 private:
  explicit Url(std::string text) : text_(std::move(text)) {}

  std::string text_;
};

}  // namespace qorix
