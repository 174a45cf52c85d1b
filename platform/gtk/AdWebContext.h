#pragma once

using WebKitWebContext = struct _WebKitWebContext;

namespace qorix::gtk {

/// The context that all web views of advertisements share: nothing of a page is ever stored or
/// downloaded. Made by the first call; owned by the process. Main thread only.
WebKitWebContext* adWebContext();

}  // namespace qorix::gtk
