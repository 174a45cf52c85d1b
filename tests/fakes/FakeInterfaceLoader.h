#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/platform/InterfaceLoader.h>

#include "fakes/FakeView.h"

namespace qorix {

/// Makes the views that the library's interface file describes.
class FakeInterfaceLoader : public InterfaceLoader {
 public:
  std::optional<Interface> load(const std::string& name, const Bundle& bundle,
                                std::weak_ptr<WebViewDelegate> delegate) override {
    requests.push_back({name, bundle.executableUrl()});
    if (isBroken) {
      return std::nullopt;
    }
    auto root = std::make_shared<FakeBoxView>();
    auto webView = std::make_shared<FakeWebView>();
    webView->page = page;
    root->addSubview(webView);
    webViews.push_back(webView);
    delegates.push_back(std::move(delegate));
    return Interface{root, webView};
  }

  struct Request {
    std::string name;
    Url executableUrl;
  };

  /// Set when there is no interface file.
  bool isBroken = false;
  /// Evaluates the scripts of each new page.
  std::function<std::string(const std::string&)> page;
  std::vector<Request> requests;
  std::vector<std::weak_ptr<FakeWebView>> webViews;
  std::vector<std::weak_ptr<WebViewDelegate>> delegates;
};

}  // namespace qorix
