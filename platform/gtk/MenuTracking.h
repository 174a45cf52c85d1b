#pragma once

namespace qorix::gtk {

/// Whether the user has a menu open, in any window of the process. Main thread only.
bool isMenuTracked();

}  // namespace qorix::gtk
