#pragma once

#include <string>

namespace qorix {

// Read from the environment at each call. GLib's g_get_user_config_dir and g_get_user_data_dir keep
// the values of the first call, and accept relative paths, which count as unset here.

/// Where programs keep the user's settings: $XDG_CONFIG_HOME, or ~/.config if that is not an
/// absolute path.
std::string userConfigurationFolder();

/// Where programs keep the user's data: $XDG_DATA_HOME, or ~/.local/share if that is not an
/// absolute path.
std::string userDataFolder();

}  // namespace qorix
