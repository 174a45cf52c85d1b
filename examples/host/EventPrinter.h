#pragma once

#include <memory>
#include <vector>

#include <qorix/platform/NotificationCenter.h>
#include <qorix/platform/View.h>

/// Prints `{"event":NAME}` on a line of its own.
void printEvent(const char* name);

/// Prints every notification of the library on a line of its own, as long as the returned
/// observations are held. `hostViews` are the host's views, in the order by which the lines number
/// them.
std::vector<qorix::NotificationObservation> printAdEvents(
    std::vector<std::shared_ptr<qorix::View>> hostViews);
