#pragma once

#include <string>

#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/Value.h>

/// What made the page ask for the navigation: "link click", "form submission", ...
std::string navigationKind(const qorix::Dictionary& actionInformation);

/// Why `controller` has answered the question for that navigation with `use` (or with `ignore`),
/// and what comes of it, in plain words. `isOwnWebView`: whether the controller's own web view
/// asked. Asks the controller's own tests in its own order, and claims nothing that does not fit
/// the answer.
std::string decisionReason(qorix::MyPushAdViewController& controller, bool isOwnWebView,
                           const qorix::Url& url, const qorix::Dictionary& actionInformation,
                           bool use);
