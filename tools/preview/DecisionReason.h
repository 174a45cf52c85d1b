#pragma once

#include <string>

#include "platform/Url.h"
#include "platform/Value.h"
#include "qorix/MyPushAdViewController.h"

namespace qorix::tools::preview {

/// What made the page ask for the navigation: "link click", "form submission", ...
std::string navigationKind(const Dictionary& actionInformation);

/// Why `controller` has answered the question for that navigation with `use` (or with `ignore`),
/// and what comes of it, in plain words. `isOwnWebView`: whether the controller's own web view
/// asked. Asks the controller's own tests in its own order, and claims nothing that does not fit
/// the answer.
std::string decisionReason(MyPushAdViewController& controller, bool isOwnWebView, const Url& url,
                           const Dictionary& actionInformation, bool use);

}  // namespace qorix::tools::preview
