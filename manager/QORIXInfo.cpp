#include <qorix/QORIXCommonUtil.h>
#include <qorix/QORIXInfo.h>

namespace qorix {

namespace {

constexpr const char* kInternalVersion = "25.3.0";

}  // namespace

std::string QORIXInfo::frameworkInfoString() {
  std::string info = "{QORIXFramework Info: ";
  info += std::string("QORIXFrameworkInternalVersion=") + kInternalVersion + ", ";
  info += QORIXCommonUtil::fetchQORIXCompileDateTimeString();
  info += "}";
  return info;
}

}  // namespace qorix
