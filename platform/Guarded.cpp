#include "platform/Guarded.h"

#include <exception>
#include <string>

#include "platform/Log.h"

namespace qorix {

namespace {

void logStopped(const char* reason) {
  logLine(std::string("ZAM An exception was stopped: ") + reason);
}

}  // namespace

void logStoppedException() noexcept {
  try {
    try {
      throw;
    } catch (const std::exception& exception) {
      logStopped(exception.what());
    } catch (...) {
      logStopped("of an unknown kind");
    }
  } catch (...) {  // there is no way left to tell
    return;
  }
}

}  // namespace qorix
