#pragma once

// Platform: values and ports.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/DomNode.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/Value.h>
#include <qorix/platform/View.h>

namespace qorix {

class WebView;

/// The frame of a page that an event is about.
struct WebFrame {
  bool isMainFrame = true;  ///< False for a frame inside the page.
};

/// What made a page ask for a navigation; the value under kWebActionNavigationTypeKey.
enum class WebNavigationType : int {
  linkClicked = 0,      ///< A link was activated.
  formSubmitted = 1,    ///< A form was sent.
  backForward = 2,      ///< The history was walked.
  reload = 3,           ///< The page is loaded once more.
  formResubmitted = 4,  ///< A form was sent once more.
  other = 5,            ///< Anything else, such as the first load or a script.
};

/// @{
/// Keys of a navigation's action information. The element dictionary is there when the navigation
/// came from a click and its DOM node is the innermost node that was hit, as it is when the
/// question is asked; by the keyboard that is the focused link. Whether an act of the user's own
/// stands behind the navigation, and not the page's scripts alone, is a boolean; it is missing
/// where nobody can tell.
inline constexpr const char* kWebActionNavigationTypeKey = "WebActionNavigationTypeKey";
inline constexpr const char* kWebActionElementKey = "WebActionElementKey";
inline constexpr const char* kWebElementDomNodeKey = "WebElementDOMNode";
inline constexpr const char* kWebActionIsUserActKey = "WebActionIsUserActKey";
/// @}

/// Takes the decision on one navigation. Call one of the two exactly once, before the delegate's
/// method returns.
class QORIX_EXPORT WebPolicyDecisionListener {
 public:
  virtual ~WebPolicyDecisionListener() = default;
  virtual void use() = 0;     ///< The page goes there.
  virtual void ignore() = 0;  ///< The page stays where it is.
};

/// Hears what happens in a web view. Called on the main thread. Every method may be left out.
class QORIX_EXPORT WebViewDelegate {
 public:
  virtual ~WebViewDelegate() = default;

  /// A frame has begun to fetch a page.
  virtual void webViewDidStartProvisionalLoadForFrame(const std::shared_ptr<WebView>& /*webView*/,
                                                      const WebFrame& /*frame*/) {}

  /// The frame and everything in it has loaded; inner frames report before the main frame.
  virtual void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& /*webView*/,
                                            const WebFrame& /*frame*/) {}

  /// The pointer is over another element than before; `element` describes it as a navigation's
  /// action information does.
  virtual void webViewMouseDidMoveOverElement(const std::shared_ptr<WebView>& /*webView*/,
                                              const Dictionary& /*element*/) {}

  /// May the page go to `url`?
  virtual void webViewDecidePolicyForNavigationAction(const std::shared_ptr<WebView>& /*webView*/,
                                                      const Dictionary& /*actionInformation*/,
                                                      const Url& /*url*/, const WebFrame& /*frame*/,
                                                      WebPolicyDecisionListener& listener) {
    listener.use();
  }
};

/// A view that shows a web page. A view, never a window or a loop.
class QORIX_EXPORT WebView : public View {
 public:
  /// Loads `html` into the main frame. Relative references resolve against the folder of `baseUrl`.
  /// The page on show cannot refuse to go.
  virtual void loadHtmlString(const std::string& html, const Url& baseUrl) = 0;

  /// Ends the page on show, a little later and silently: its scripts, its sound, what it fetches.
  /// The view stays empty until another page is loaded.
  virtual void endPage() = 0;

  /// Evaluates `script` in the main frame, among the page's own scripts, and returns its value
  /// as text when that is a text, a number or a boolean. Returns the empty text for any other
  /// value, for a script that fails, and when the page's process has died. Also for a script that
  /// takes longer than kScriptTimeLimit, not counting the time that the host spends in its own
  /// handlers: the page then goes on with it alone. The evaluation does not count as an act of the
  /// user.
  ///
  /// A script for a page that is still busy so is queued, and evaluated when the page is done with
  /// those before. At most 16 wait; further ones are dropped.
  ///
  /// Events of the host's own windows are handled before it returns, so the view and the caller may
  /// lose their last other owner: hold what you use. Tasks of the
  /// run loop port wait until it has returned, unless the host runs a modal dialog.
  virtual std::string stringByEvaluatingJavaScriptFromString(const std::string& script) = 0;

  /// Whether the page is done with all scripts that it went on with alone.
  virtual bool isPageAnswering() const = 0;

  /// Runs `task` once, as a delayed perform, when the page is done with them; never when it is gone
  /// before.
  virtual void performWhenPageAnswers(std::function<void()> task) = 0;

  /// Whether the view paints a background where the page paints none. When off, what lies behind
  /// the view shows through.
  virtual void setDrawsBackground(bool draws) = 0;
};

/// Seconds that a page's script may take before its evaluation is given up.
inline constexpr double kScriptTimeLimit = 2.0;

}  // namespace qorix
