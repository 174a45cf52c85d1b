#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

namespace qorix {

void logLine(std::string_view message) { platform().log->write(message); }

void logCheck(std::string_view method, int line, std::string_view message) {
  std::string text(method);
  text += ' ';
  text += std::to_string(line);
  text += ": ZAM <=> ";
  text += message;
  logLine(text);
}

}  // namespace qorix
