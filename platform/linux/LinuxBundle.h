#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/Bundle.h>

namespace qorix {

/// The host application: its program file and its identifier.
std::shared_ptr<const Bundle> hostBundle(std::optional<std::string> bundleIdentifier);

/// This library: the file that holds its code (the shared library, or the program if it is linked
/// statically), and no identifier.
std::shared_ptr<const Bundle> libraryBundle();

}  // namespace qorix
