#pragma once

#include <glib.h>

#include <optional>
#include <string>
#include <utility>

#include "platform/Guarded.h"

namespace qorix::gtk {

/// What `work` returns, or `fallback` if it throws: no exception may pass into C.
template <class Result, class Work>
Result guardedResult(Result fallback, Work&& work) noexcept {
  callGuarded([&] { fallback = work(); });
  return fallback;
}

/// A text for C, which its receiver frees; null if there is none. Always UTF-8: what is not is
/// replaced.
inline gchar* newText(const std::optional<std::string>& text) {
  return text ? g_utf8_make_valid(text->data(), static_cast<gssize>(text->size())) : nullptr;
}

/// A text for C that lives as long as `text`; null if there is none.
inline const gchar* borrowedText(const std::optional<std::string>& text) {
  return text ? text->c_str() : nullptr;
}

/// A text from C, which may be null.
inline std::optional<std::string> optionalText(const gchar* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

inline bool isUtf8(const gchar* text) {
  return text != nullptr && g_utf8_validate(text, -1, nullptr) != FALSE;
}

inline bool isUtf8OrNull(const gchar* text) { return text == nullptr || isUtf8(text); }

}  // namespace qorix::gtk
