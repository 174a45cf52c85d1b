#pragma once

namespace qorix::gtk {

/// Whether the user has a menu open, in whichever of the process's windows. Main thread only.
bool isMenuTracked();

}  // namespace qorix::gtk
