#include <qorix/QORIXCommonUtil.h>

#include "manager/BuildStamp.h"

namespace qorix {

std::string QORIXCommonUtil::fetchQORIXCompileDateTimeString() {
  return std::string("QORIX compile on [") + kBuildDate + " - " + kBuildTime + "]";
}

}  // namespace qorix
