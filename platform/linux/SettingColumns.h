#pragma once

#include <optional>
#include <string>

#include "platform/linux/Setting.h"

struct sqlite3_stmt;

namespace qorix {

// How settings stand in the columns of a row: an integer, a text or, for a list, a blob. The
// column's storage class says which.

/// Binds a text, which must stay as it is until the statement has been reset. Returns an SQLite
/// result code.
int bindText(sqlite3_stmt* statement, int index, const std::string& text);

/// The same for a setting, of which a copy is made where it is not bound as it is.
int bindSetting(sqlite3_stmt* statement, int index, const Setting& setting);

/// The bytes of a column of the current row.
std::string columnBytes(sqlite3_stmt* statement, int index);

/// The setting in a column of the current row; absent if the column holds none.
std::optional<Setting> columnSetting(sqlite3_stmt* statement, int index);

}  // namespace qorix
