#pragma once

#include <string>
#include <vector>

#include <qorix/platform/WebView.h>

namespace qorix {

/// Keeps the decisions about a navigation: "use" or "ignore".
struct FakePolicyListener : WebPolicyDecisionListener {
  void use() override { decisions.emplace_back("use"); }
  void ignore() override { decisions.emplace_back("ignore"); }
  std::vector<std::string> decisions;
};

}  // namespace qorix
