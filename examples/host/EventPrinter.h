#pragma once

#include <memory>
#include <vector>

#include "platform/View.h"

/// Prints `{"event":NAME}` on a line of its own.
void printEvent(const char* name);

/// From now on, prints every notification of the library on a line of its own. `hostViews` are the
/// host's views, in the order by which the lines number them.
void printNotifications(std::vector<std::shared_ptr<qorix::View>> hostViews);
