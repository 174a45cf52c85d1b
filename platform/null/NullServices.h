#pragma once

#include <qorix/platform/Platform.h>

namespace qorix {

/// Services that do nothing, as `nullPlatform` describes them; without a notification center.
Platform nullServices();

}  // namespace qorix
