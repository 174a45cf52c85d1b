#pragma once

using WebKitWebContext = struct _WebKitWebContext;
using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

// What pages may ask for and never get: an advertisement opens nothing of its own on the user's
// desktop and learns nothing from it.

/// Refuses menus, dialogs, choosers, printing, full screen, desktop notifications, credentials and
/// permissions to the pages of `webView`. A page that asks whether it may be left is always left.
void refuseRequests(WebKitWebView* webView);

/// Cancels each download that a page of `context` starts.
void refuseDownloads(WebKitWebContext* context);

}  // namespace qorix::gtk
