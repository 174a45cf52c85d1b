#pragma once

// Machinery: public for those who extend it.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/Bundle.h>
#include <qorix/platform/ViewController.h>
#include <qorix/platform/WebView.h>

namespace qorix {

class MyPushAdViewController;
class OpeningLimit;

/// How an advertisement is presented.
enum MyPushAdMode : std::int64_t {
  MyPushAdModePopup = 0,   ///< In the pop-up window.
  MyPushAdModeBanner = 1,  ///< In the host view.
};

/// Hears what the user does in the page. Main thread. Every method may be left out.
class QORIX_EXPORT MyPushAdViewControllerDelegate {
 public:
  virtual ~MyPushAdViewControllerDelegate() = default;

  /// The user wants the advertisement closed; the controller itself closes nothing.
  virtual void pushAdViewControllerCloseButtonDidClick(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/) {}

  /// The user chose the page's in-app purchase; `url` is the address of the link, unchanged.
  virtual void pushAdViewControllerOpenIAPButtonDidClickWithURL(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/,
      const std::optional<Url>& /*url*/) {}
};

/// Shows one advertisement's page in a web view and reports what the user does in it. Main thread
/// only.
///
/// A subclass may replace any of the virtual methods; the controller calls its own through them.
/// One that is made without its factory and not initialised works all the same, without
/// `customInit`. One that is not in a std::shared_ptr names no sender to its delegate and gets no
/// events of its web view.
class QORIX_EXPORT MyPushAdViewController
    : public ViewController,
      public WebViewDelegate,
      public std::enable_shared_from_this<MyPushAdViewController> {
 public:
  /// A new controller, allocated as a `Self`, whose view will come from the library's interface
  /// file "MyPushAdViewController". Any mode is stored as given; only MyPushAdModePopup is special.
  /// Null when a subclass cannot be initialised.
  template <class Self = MyPushAdViewController>
  static std::shared_ptr<Self> createInstanceWithPushAdMode(std::int64_t mode) {
    auto controller = std::make_shared<Self>();
    if (!controller->initWithNibName("MyPushAdViewController", libraryBundle())) {
      return nullptr;
    }
    controller->setPushAdMode(mode);
    return controller;
  }

  /// @{
  /// Initialise a new controller, once, and run `customInit`; false, without it, when that cannot
  /// be. What is missing is as the factory has it.
  bool initWithNibName(const std::optional<std::string>& nibName,
                       const std::shared_ptr<const Bundle>& bundle) override;
  bool initWithCoder(const Dictionary& coder) override;
  /// @}

  /// Gives the controller's view that size (points) and leaves its origin.
  virtual void changeViewSize(const Size& size);

  /// Sets the title and loads the page; what is absent stays as it is. The page's relative
  /// references resolve against the folder of the library's own file.
  virtual void loadDataWithTitle(const std::optional<std::string>& title,
                                 const std::optional<std::string>& htmlString);

  /// Ends the page, which nobody will see again: it runs, sounds and fetches no more.
  virtual void endPage();

  /// @{
  /// Tell the delegate, if there is one.
  virtual void handleCloseButtonClicked();
  virtual void handleOpenIAPButtonClickedWithURL(const std::optional<Url>& url);
  /// @}

  /// @{
  /// Held weakly.
  std::shared_ptr<MyPushAdViewControllerDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<MyPushAdViewControllerDelegate>& delegate) {
    delegate_ = delegate;
  }
  /// @}

  /// @{
  /// The mode, a MyPushAdMode or any other number; MyPushAdModePopup unless the factory says more.
  std::int64_t pushAdMode() const { return pushAdMode_; }
  void setPushAdMode(std::int64_t mode) { pushAdMode_ = mode; }
  /// @}

  /// @{
  /// The web view inside the controller's view, which keeps it alive; null before the view is made
  /// and after it is gone.
  virtual std::shared_ptr<WebView> legacyWebView() const { return legacyWebView_.lock(); }
  void setLegacyWebView(const std::shared_ptr<WebView>& webView) { legacyWebView_ = webView; }
  /// @}

  // WebViewDelegate.
  void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                    const WebFrame& frame) override;
  void webViewDecidePolicyForNavigationAction(const std::shared_ptr<WebView>& webView,
                                              const Dictionary& actionInformation, const Url& url,
                                              const WebFrame& frame,
                                              WebPolicyDecisionListener& listener) override;

  // Navigation policy: what a click on a link asks for. `actionInformation` may lack any of its
  // entries or hold them with foreign types.

  /// Does the link ask for the Mac App Store ("ls=1" in the query)?
  virtual bool isCapableForMacAppStore(const Url& url);
  /// For the user's browser ("zamopenout=1" in the query or "zamopenout" in the clicked class)?
  virtual bool isCapableForOpenInBrowser(const Url& url, const Dictionary& actionInformation);
  /// For the host's in-app purchase ("zamopeniap=1" in the query or "zamopeniap" in the clicked
  /// class)?
  virtual bool isCapableForOpenIAP(const Url& url, const Dictionary& actionInformation);
  /// Is the clicked node itself the page's close control (id "cocoa_close_web")?
  virtual bool isCloseButtonActionForNavigationAction(const Dictionary& actionInformation);
  /// The clicked element, or the one that the clicked text is directly in; null when there is none.
  virtual std::shared_ptr<DomHtmlElement> findActionHTMLElementForNavigationAction(
      const Dictionary& actionInformation);
  /// Tells the host that the user activated `element`; ignored unless it is a DomHtmlElement.
  virtual void handleUserIsTriggeringNavigation(const std::shared_ptr<Object>& element);

  // Ad filter feature: the page learns which of the applications that it promotes are installed.

  /// Whether the page defines both functions of the exchange; false without a web view.
  virtual bool isSupportAdFilterFeature(const std::shared_ptr<WebView>& webView);
  /// Runs the exchange with the page, synchronously; logs when the page does not take part. Nothing
  /// of it happens with a page that is too busy to say whether it does: the work after the load is
  /// then done when the page is done with its own.
  virtual void processAdFilterFeatureIfNeeded(const std::shared_ptr<WebView>& webView);
  /// The texts between the commas of the page's list, trimmed, without empty ones. An empty list
  /// unless `value` is a text.
  static Array parseArrayWithJSString(const Value& value);
  /// "1" for each entry that is the bundle identifier of an installed application, else "0".
  static Array findAppInstallFlagsWithAppIds(const std::optional<Array>& appIds);
  /// The entries as a script's array literal; nothing in them is escaped.
  static std::string convertToJSArrayWithStringArray(const std::optional<Array>& texts);

 protected:
  std::shared_ptr<View> loadView() override;
  void viewDidLoad() override;

  /// For subclasses: runs once, when a new controller has been initialised.
  virtual void customInit() {}

 private:
  static std::shared_ptr<const Bundle> libraryBundle();
  bool putOffAdFilterFeature(const WebView& webView);
  void openUrl(const std::optional<Url>& url, const Dictionary& actionInformation, int line);

  std::weak_ptr<MyPushAdViewControllerDelegate> delegate_;
  std::int64_t pushAdMode_ = MyPushAdModePopup;
  std::weak_ptr<WebView> legacyWebView_;
  bool isAdFilterFeaturePutOff_ = false;
  int putOffs_ = 0;                             // since the page last said whether it takes part
  std::shared_ptr<OpeningLimit> openingLimit_;  // of the page loaded last; made when it is needed
};

}  // namespace qorix
