#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qorix/platform/InterfaceLoader.h>

#include "platform/gtk/MainContextRunLoop.h"

namespace qorix::gtk {

/// Makes views from the GtkBuilder files among this library's resources. They are the interface
/// files of the installed platform's library bundle; other bundles have none.
///
/// In an interface file the root, a GtkOverlay that becomes a MyPushAdBoxView, has the id "view".
/// The size that it requests is the view's first size, not its least. A WebKitWebView inside it has
/// the id "webView". The file finds the web context to use under the id "adContext".
class ResourceInterfaceLoader : public InterfaceLoader {
 public:
  explicit ResourceInterfaceLoader(std::shared_ptr<MainContextRunLoop> runLoop);

  std::optional<Interface> load(const std::string& name, const Bundle& bundle,
                                std::weak_ptr<WebViewDelegate> delegate) override;

 private:
  const std::shared_ptr<MainContextRunLoop> runLoop_;
};

}  // namespace qorix::gtk
