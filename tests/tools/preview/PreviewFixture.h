#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>

#include "support/Documents.h"
#include "support/Screen.h"
#include "support/TemporaryFolder.h"
#include "support/Wait.h"
#include "tools/preview/PreviewProcess.h"

namespace qorix::test {

inline constexpr Pixel kPink{255, 0, 170};  // of no desktop and no editor, like the others
inline constexpr Pixel kBlue{0, 170, 255};
inline constexpr const char* kPinkPage = "<body style='margin:0;background:#ff00aa'>";
inline constexpr const char* kBluePage = "<body style='margin:0;background:#00aaff'>";

inline std::string entry(const std::string& language, const std::string& page) {
  return "<" + language + "><![CDATA[<!DOCTYPE html>" + page + "]]></" + language + ">";
}

inline std::string document(DocumentOf values, const std::string& page = kPinkPage) {
  values.html = entry("default", page);
  return makeDocument(values);
}

inline std::string outputOf(const std::string& command) {
  std::string output;
  FILE* stream = popen((command + " 2>/dev/null").c_str(), "r");
  for (int c = 0; (c = std::fgetc(stream)) != EOF;) {
    output += static_cast<char>(c);
  }
  pclose(stream);
  return output;
}

/// Whether the condition holds in time.
inline bool eventually(const std::function<bool()>& condition) {
  return waitUntil(condition, kPatience);
}

/// Where the contents of the window are whose title begins so; without size when there is none.
inline PixelBox windowBox(const std::string& title) {
  PixelBox box;
  const std::string id = outputOf("xdotool search --onlyvisible --name '^" + title + "'");
  const std::string info = outputOf("xwininfo -id " + id.substr(0, id.find('\n')));
  const auto value = [&](const std::string& label, int& number) {
    const auto found = info.find(label);
    return found != std::string::npos &&
           std::sscanf(info.c_str() + found + label.size(), "%d", &number) == 1;
  };
  const bool isKnown = value("Absolute upper-left X:", box.x) &&
                       value("Absolute upper-left Y:", box.y) && value("Width:", box.width) &&
                       value("Height:", box.height);
  return isKnown ? box : PixelBox();
}

/// Where the screen shows that colour now.
inline PixelBox boxNow(const Pixel& color) {
  return takePicture(std::getenv("DISPLAY"))->boxOf(color);
}

inline std::string text(const PixelBox& box) {
  return std::to_string(box.width) + "x" + std::to_string(box.height) + "+" +
         std::to_string(box.x) + "+" + std::to_string(box.y);
}

inline bool run(const std::string& command) { return std::system(command.c_str()) == 0; }

inline std::vector<int> childrenOf(int process) {
  const std::string name = std::to_string(process);
  std::ifstream children("/proc/" + name + "/task/" + name + "/children");
  return {std::istream_iterator<int>(children), {}};
}

inline std::string nameOf(int process) {
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
  return name;
}

/// Also when nobody has taken notice of it.
inline bool hasEnded(int process) {
  std::string status;
  std::getline(std::ifstream("/proc/" + std::to_string(process) + "/stat"), status);
  return status.empty() || status.find(") Z") != std::string::npos;
}

inline std::set<std::string> filesBelow(const std::filesystem::path& folder) {
  std::set<std::string> files;
  for (const auto& each : std::filesystem::recursive_directory_iterator(folder)) {
    if (each.is_regular_file()) {
      files.insert(each.path().string());
    }
  }
  return files;
}

/// Runs the program on a file of its own folder.
class PreviewFixture : public ::testing::Test {
 protected:
  /// Writes the file in place.
  void write(const std::string& text) const { std::ofstream(file_, std::ios::binary) << text; }

  /// Puts another file in its place, as most editors do.
  void replace(const std::string& text) const {
    std::ofstream(folder_ / "new", std::ios::binary) << text;
    std::filesystem::rename(folder_ / "new", file_);
  }

  std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
    more.push_back(file_);
    return more;
  }

  static void expectPainted(const Pixel& color, int width, int height) {
    const PixelBox box = waitForColor(color, width, height);
    EXPECT_EQ(std::pair(box.width, box.height), std::pair(width, height));
  }

  /// The user closes the window; no other lines than the known ones are printed.
  static void closeWindow(PreviewProcess& preview) {
    ASSERT_TRUE(run("wmctrl -c 'Preview of'"));
    EXPECT_EQ(preview.exitStatus(), 0);
    EXPECT_EQ(preview.lines().back().kind, "quit");
    EXPECT_THAT(preview.texts("no such form"), ::testing::IsEmpty());
    EXPECT_EQ(preview.countLog("-WARNING **") + preview.countLog("-CRITICAL **"), 0);
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_ / "ad.xml";
};

}  // namespace qorix::test
