#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/MyPushAdViewController.h>

namespace qorix {

/// Keeps what a view controller reports: "close", or "purchase" and the address.
struct FakeControllerDelegate : MyPushAdViewControllerDelegate {
  void pushAdViewControllerCloseButtonDidClick(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/) override {
    reports.emplace_back("close");
  }
  void pushAdViewControllerOpenIAPButtonDidClickWithURL(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/,
      const std::optional<Url>& url) override {
    reports.push_back("purchase " + url->absoluteString());
  }
  std::vector<std::string> reports;
};

}  // namespace qorix
