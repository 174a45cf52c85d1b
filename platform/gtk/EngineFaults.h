#pragma once

using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// Works around two faults of the engine's painting in `webView`. To be called once. All faults
/// that the library works around are in docs/testing.md, with a test that fails without the work
/// around.
void correctPainting(WebKitWebView* webView);

}  // namespace qorix::gtk
