#include "tools/preview/PreviewProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <regex>

namespace qorix::test {

namespace {

std::vector<std::string> command(const std::vector<std::string>& arguments,
                                 const std::vector<std::string>& environment) {
  std::vector<std::string> all{"/usr/bin/env"};
  all.insert(all.end(), environment.begin(), environment.end());
  all.emplace_back(QORIX_PREVIEW);
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

}  // namespace

PreviewProcess::PreviewProcess(const std::vector<std::string>& arguments,
                               const std::vector<std::string>& environment)
    : ChildProcess(command(arguments, environment)) {}

void PreviewProcess::takeLine(const std::string& line) {
  static const std::regex form(R"(\d\d:\d\d:\d\d\.\d\d\d ([a-z ]+): (.*))");
  std::smatch parts;
  if (std::regex_match(line, parts, form)) {
    lines_.push_back({parts[1], parts[2]});
  } else {
    lines_.push_back({"no such form", line});
  }
}

std::vector<std::string> PreviewProcess::texts(std::string_view kind) const {
  std::vector<std::string> texts;
  for (const auto& line : lines_) {
    if (line.kind == kind) {
      texts.push_back(line.text);
    }
  }
  return texts;
}

std::optional<std::string> PreviewProcess::waitForLine(std::string_view kind, int number,
                                                       double seconds) {
  const auto index = static_cast<std::size_t>(number) - 1;
  if (!waitFor([&] { return texts(kind).size() > index; }, seconds)) {
    return std::nullopt;
  }
  return texts(kind)[index];
}

bool PreviewProcess::waitForText(std::string_view kind, std::string_view part, double seconds) {
  return waitFor(
      [&] {
        return std::ranges::any_of(texts(kind), [part](const std::string& text) {
          return text.find(part) != std::string::npos;
        });
      },
      seconds);
}

int PreviewProcess::exitStatus() {
  if (!waitForEnd()) {
    return -1;
  }
  return WIFEXITED(status()) ? WEXITSTATUS(status()) : -1;
}

}  // namespace qorix::test
