#include "platform/linux/SettingColumns.h"

#include <sqlite3.h>

#include <charconv>
#include <string_view>
#include <vector>

namespace qorix {

namespace {

/// A list as one blob: each text as its length, ":", its bytes, ",". Texts may hold any byte.
std::string encodeList(const std::vector<std::string>& list) {
  std::string blob;
  for (const std::string& text : list) {
    blob += std::to_string(text.size()) + ':' + text + ',';
  }
  return blob;
}

std::optional<std::vector<std::string>> decodeList(std::string_view blob) {
  std::vector<std::string> list;
  while (!blob.empty()) {
    std::size_t size = 0;
    const auto [end, error] = std::from_chars(blob.data(), blob.data() + blob.size(), size);
    blob.remove_prefix(static_cast<std::size_t>(end - blob.data()));
    if (error != std::errc() || blob.size() < 2 || size > blob.size() - 2 || blob.front() != ':' ||
        blob[size + 1] != ',') {
      return std::nullopt;
    }
    list.emplace_back(blob.substr(1, size));
    blob.remove_prefix(size + 2);
  }
  return list;
}

}  // namespace

int bindText(sqlite3_stmt* statement, int index, const std::string& text) {
  return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC,
                             SQLITE_UTF8);
}

int bindSetting(sqlite3_stmt* statement, int index, const Setting& setting) {
  if (const auto* integer = std::get_if<std::int64_t>(&setting)) {
    return sqlite3_bind_int64(statement, index, *integer);
  }
  if (const auto* text = std::get_if<std::string>(&setting)) {
    return bindText(statement, index, *text);
  }
  const std::string blob = encodeList(std::get<std::vector<std::string>>(setting));
  return sqlite3_bind_blob64(statement, index, blob.data(), blob.size(), SQLITE_TRANSIENT);
}

std::string columnBytes(sqlite3_stmt* statement, int index) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, index));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, index));
  return bytes == nullptr ? std::string() : std::string(bytes, size);
}

std::optional<Setting> columnSetting(sqlite3_stmt* statement, int index) {
  switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER:
      return sqlite3_column_int64(statement, index);
    case SQLITE_TEXT:
      return columnBytes(statement, index);
    case SQLITE_BLOB:
      return decodeList(columnBytes(statement, index));
    default:
      return std::nullopt;
  }
}

}  // namespace qorix
