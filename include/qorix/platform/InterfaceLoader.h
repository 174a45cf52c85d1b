#pragma once

// Platform: values and ports.

#include <memory>
#include <optional>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/Bundle.h>
#include <qorix/platform/View.h>
#include <qorix/platform/WebView.h>

namespace qorix {

/// The objects that an interface file makes.
struct Interface {
  /// The root view; the caller owns it.
  std::shared_ptr<View> view;
  /// The web view somewhere inside of `view`, which keeps it alive.
  std::weak_ptr<WebView> webView;
};

/// Makes views from the interface files of a bundle. Main thread only.
class QORIX_EXPORT InterfaceLoader {
 public:
  virtual ~InterfaceLoader() = default;

  /// Makes a new set of the objects that the bundle's interface file `name` describes and makes
  /// `delegate` (held weakly) the web view's delegate. Nothing, after one log line, when there is
  /// no such file or it lacks the objects.
  virtual std::optional<Interface> load(const std::string& name, const Bundle& bundle,
                                        std::weak_ptr<WebViewDelegate> delegate) = 0;
};

}  // namespace qorix
