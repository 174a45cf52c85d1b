#pragma once

using WebKitWebView = struct _WebKitWebView;

namespace qorix::gtk {

/// Works around two faults of the engine's painting in `webView`, to be called once.
void correctPainting(WebKitWebView* webView);

}  // namespace qorix::gtk
