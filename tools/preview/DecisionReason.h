#pragma once

#include <string>

#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/Value.h>

namespace qorix::tools::preview {

/// What made the page ask for the navigation: "link click", "form submission", ...
std::string navigationKind(const Dictionary& actionInformation);

/// Why `controller` has decided on `use` (or `ignore`) for that navigation, and what comes of it.
/// `isOwnWebView`: whether the controller's own web view asks. Calls the controller's tests in its
/// own order; if they do not explain the decision, says so.
std::string decisionReason(MyPushAdViewController& controller, bool isOwnWebView, const Url& url,
                           const Dictionary& actionInformation, bool use);

}  // namespace qorix::tools::preview
