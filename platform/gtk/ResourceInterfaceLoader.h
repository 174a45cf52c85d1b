#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/InterfaceLoader.h>

#include "platform/gtk/MainContextRunLoop.h"

namespace qorix::gtk {

/// Makes views from the GtkBuilder files among this library's resources; they stand for the
/// interface files of the installed platform's library bundle, and other bundles have none.
///
/// An interface file gives the id "view" to its root, a GtkOverlay that becomes a MyPushAdBoxView;
/// the size that it requests for it is the one that the view has at first, and no least size. It
/// gives the id "webView" to a WebKitWebView inside of it, and finds the web context to use under
/// the id "adContext".
class ResourceInterfaceLoader : public InterfaceLoader {
 public:
  explicit ResourceInterfaceLoader(std::shared_ptr<MainContextRunLoop> runLoop);

  std::optional<Interface> load(const std::string& name, const Bundle& bundle,
                                std::weak_ptr<WebViewDelegate> delegate) override;

 private:
  const std::shared_ptr<MainContextRunLoop> runLoop_;
};

}  // namespace qorix::gtk
