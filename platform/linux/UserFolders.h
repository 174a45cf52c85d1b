#pragma once

#include <string>

namespace qorix {

/// Where programs keep the user's settings: $XDG_CONFIG_HOME, or ~/.config when that is no absolute
/// path. Read from the environment at each call.
std::string userConfigurationFolder();

/// Where programs keep the user's data: $XDG_DATA_HOME, or ~/.local/share likewise.
std::string userDataFolder();

}  // namespace qorix
