#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/Bundle.h>

namespace qorix {

/// The host application: its program file, and the identifier that it goes by.
std::shared_ptr<const Bundle> hostBundle(std::optional<std::string> bundleIdentifier);

/// This library: no identifier, and the file that holds its code (the shared library, or the
/// program when it is linked in).
std::shared_ptr<const Bundle> libraryBundle();

}  // namespace qorix
