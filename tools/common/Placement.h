#pragma once

#include <string>

#include <qorix/MyPushAdInfo.h>

namespace qorix::tools {

/// "banner, top right", "pop-up" or "nothing".
std::string placementOf(const MyPushAdInfo& info);

}  // namespace qorix::tools
