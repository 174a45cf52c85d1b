#include "platform/gtk/NavigationQuestions.h"

#include <webkit2/webkit2.h>

#include <exception>
#include <string>
#include <utility>

#include "platform/gtk/Unref.h"

namespace qorix::gtk {

namespace {

WebKitNavigationAction* actionOf(WebKitPolicyDecision* decision) {
  return webkit_navigation_policy_decision_get_navigation_action(
      WEBKIT_NAVIGATION_POLICY_DECISION(decision));
}

std::string requestedUri(WebKitPolicyDecision* decision) {
  const char* uri =
      webkit_uri_request_get_uri(webkit_navigation_action_get_request(actionOf(decision)));
  return uri == nullptr ? "" : uri;
}

class PolicyListener : public WebPolicyDecisionListener {
 public:
  explicit PolicyListener(WebKitPolicyDecision* decision) : decision_(decision) {}
  /// Has no effect if the delegate has decided. If it throws, the caller decides.
  ~PolicyListener() override {
    if (std::uncaught_exceptions() == exceptions_) {
      use();
    }
  }
  PolicyListener(const PolicyListener&) = delete;
  PolicyListener& operator=(const PolicyListener&) = delete;

  void use() override { decide(webkit_policy_decision_use); }
  void ignore() override { decide(webkit_policy_decision_ignore); }

 private:
  void decide(void (*send)(WebKitPolicyDecision*)) {
    if (decision_ != nullptr) {
      send(std::exchange(decision_, nullptr));
    }
  }

  WebKitPolicyDecision* decision_;
  const int exceptions_ = std::uncaught_exceptions();
};

}  // namespace

NavigationQuestions::NavigationQuestions(GtkWidget* widget, std::weak_ptr<WebViewDelegate> delegate)
    : delegate_(std::move(delegate)), userActs_(widget) {}

bool NavigationQuestions::answer(WebKitPolicyDecision* decision,
                                 const std::shared_ptr<WebView>& asker) {
  if (delegate_.expired()) {
    return false;
  }
  WebKitNavigationAction* action = actionOf(decision);
  const int type = static_cast<int>(webkit_navigation_action_get_navigation_type(action));
  Dictionary information = {{kWebActionNavigationTypeKey, type}};
  if (type != static_cast<int>(WebNavigationType::linkClicked)) {
    ask(delegate_, decision, asker, std::move(information), nullptr);
    return true;
  }
  const bool isUserAct =
      webkit_navigation_action_is_user_gesture(action) != FALSE && userActs_.take();
  try {
    information[kWebActionIsUserActKey] = isUserAct;
    judgeAndAsk(decision, asker, information);
  } catch (...) {
    webkit_policy_decision_ignore(decision);
    throw;
  }
  return true;
}

void NavigationQuestions::judgeAndAsk(WebKitPolicyDecision* decision,
                                      const std::shared_ptr<WebView>& asker,
                                      const Dictionary& information) {
  const std::shared_ptr<WebKitPolicyDecision> kept(
      static_cast<WebKitPolicyDecision*>(g_object_ref(decision)), Unref());
  clicks_.judge(requestedUri(decision), [delegate = delegate_, view = std::weak_ptr<WebView>(asker),
                                         kept, information](const PageClicks::Click* click) {
    if (const auto webView = view.lock()) {
      try {
        ask(delegate, kept.get(), webView, information, click);
      } catch (...) {  // the page must not follow a link that may be meant for something else
        webkit_policy_decision_ignore(kept.get());
        throw;
      }
    }
  });
}

void NavigationQuestions::ask(const Delegate& asked, WebKitPolicyDecision* decision,
                              const std::shared_ptr<WebView>& asker, Dictionary information,
                              const PageClicks::Click* click) {
  PolicyListener listener(decision);
  const auto delegate = asked.lock();
  if (delegate == nullptr) {
    return;
  }
  WebFrame frame;
  if (click != nullptr) {
    frame.isMainFrame = click->isInMainFrame;
    information[kWebActionElementKey] = Dictionary{{kWebElementDomNodeKey, click->node}};
  }
  delegate->webViewDecidePolicyForNavigationAction(
      asker, information, Url::fromWebEngine(requestedUri(decision)), frame, listener);
}

}  // namespace qorix::gtk
