#pragma once

#include <string>
#include <vector>

#include <qorix/platform/Url.h>
#include <qorix/platform/Workspace.h>

namespace qorix {

/// Keeps the addresses that it is asked to open.
struct FakeWorkspace : Workspace {
  void openUrl(const Url& url) override { opened.push_back(url.absoluteString()); }
  std::vector<std::string> opened;
};

}  // namespace qorix
