#pragma once

namespace qorix::gtk {

/// Makes the manager for C, if there is one, observe the platform that is in force now.
void letManagerListenAgain();

}  // namespace qorix::gtk
