#include "gtk/TimedServices.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <qorix/platform/Platform.h>

#include "support/Measuring.h"

namespace qorix::bench {

namespace {

class TimedRunLoop : public RunLoop {
 public:
  TimedRunLoop(std::shared_ptr<RunLoop> next, Stretches& stretches)
      : next_(std::move(next)), stretches_(stretches) {}

  void performAfterDelay(double seconds, std::function<void()> task) override {
    next_->performAfterDelay(seconds, timed(std::move(task)));
  }
  void dispatchAsync(std::function<void()> task) override {
    next_->dispatchAsync(timed(std::move(task)));
  }
  void performAndWait(std::function<void()> task) override {
    next_->performAndWait(std::move(task));
  }
  void serveHost() override { next_->serveHost(); }

 private:
  std::function<void()> timed(std::function<void()> task) {
    return [&stretches = stretches_, task = std::move(task)] { stretches.note("task", task); };
  }

  const std::shared_ptr<RunLoop> next_;
  Stretches& stretches_;
};

/// The engine's view, whose work is left out.
class TimedWebView : public WebView {
 public:
  TimedWebView(std::shared_ptr<WebView> next, Stretches& stretches)
      : next_(std::move(next)), stretches_(stretches) {}

  void loadHtmlString(const std::string& html, const Url& baseUrl) override {
    stretches_.leaveOut([&] { next_->loadHtmlString(html, baseUrl); });
  }
  void endPage() override { next_->endPage(); }
  std::string stringByEvaluatingJavaScriptFromString(const std::string& script) override {
    std::string result;
    stretches_.leaveOut([&] { result = next_->stringByEvaluatingJavaScriptFromString(script); });
    return result;
  }
  bool isPageAnswering() const override { return next_->isPageAnswering(); }
  void performWhenPageAnswers(std::function<void()> task) override {
    next_->performWhenPageAnswers(std::move(task));
  }
  void setDrawsBackground(bool draws) override {
    stretches_.leaveOut([&] { next_->setDrawsBackground(draws); });
  }
  Rect frame() const override { return next_->frame(); }
  void setFrame(const Rect& frame) override { next_->setFrame(frame); }
  std::shared_ptr<View> superview() const override { return next_->superview(); }
  void addSubview(const std::shared_ptr<View>& view) override { next_->addSubview(view); }
  void removeFromSuperview() override { next_->removeFromSuperview(); }
  void setPostsFrameChangedNotifications(bool posts) override {
    next_->setPostsFrameChangedNotifications(posts);
  }

 private:
  const std::shared_ptr<WebView> next_;
  Stretches& stretches_;
};

class TimedDelegate : public WebViewDelegate {
 public:
  TimedDelegate(std::weak_ptr<WebViewDelegate> next, Stretches& stretches)
      : next_(std::move(next)), stretches_(stretches) {}

  std::shared_ptr<WebView> webView;  // as the library knows it

  void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& /*engines*/,
                                    const WebFrame& frame) override {
    if (const auto next = next_.lock()) {
      stretches_.note("finished load", [&] { next->webViewDidFinishLoadForFrame(webView, frame); });
    }
  }

  void webViewDecidePolicyForNavigationAction(const std::shared_ptr<WebView>& /*engines*/,
                                              const Dictionary& information, const Url& url,
                                              const WebFrame& frame,
                                              WebPolicyDecisionListener& listener) override {
    if (const auto next = next_.lock()) {
      stretches_.note(url.scheme() == "https" ? "click" : "load", [&] {
        next->webViewDecidePolicyForNavigationAction(webView, information, url, frame, listener);
      });
    }
  }

 private:
  const std::weak_ptr<WebViewDelegate> next_;
  Stretches& stretches_;
};

class TimedInterfaceLoader : public InterfaceLoader {
 public:
  TimedInterfaceLoader(std::shared_ptr<InterfaceLoader> next, Stretches& stretches)
      : next_(std::move(next)), stretches_(stretches) {}

  std::optional<Interface> load(const std::string& name, const Bundle& bundle,
                                std::weak_ptr<WebViewDelegate> delegate) override {
    const auto timed = std::make_shared<TimedDelegate>(std::move(delegate), stretches_);
    std::optional<Interface> interface;
    stretches_.leaveOut([&] { interface = next_->load(name, bundle, timed); });
    if (interface) {
      timed->webView = std::make_shared<TimedWebView>(interface->webView.lock(), stretches_);
      interface->webView = timed->webView;
      delegates_.push_back(timed);
    }
    return interface;
  }

 private:
  const std::shared_ptr<InterfaceLoader> next_;
  Stretches& stretches_;
  std::vector<std::shared_ptr<TimedDelegate>> delegates_;
};

class TimedUserDefaults : public UserDefaults {
 public:
  TimedUserDefaults(std::shared_ptr<UserDefaults> next, Stretches& stretches)
      : next_(std::move(next)), stretches_(stretches) {}

  std::optional<std::string> stringForKey(const std::string& key) override {
    return next_->stringForKey(key);
  }
  std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) override {
    return next_->stringArrayForKey(key);
  }
  std::int64_t integerForKey(const std::string& key) override { return next_->integerForKey(key); }
  void setString(const std::string& value, const std::string& key) override {
    next_->setString(value, key);
  }
  void setStringArray(const std::vector<std::string>& value, const std::string& key) override {
    next_->setStringArray(value, key);
  }
  void setInteger(std::int64_t value, const std::string& key) override {
    next_->setInteger(value, key);
  }
  void removeObjectForKey(const std::string& key) override { next_->removeObjectForKey(key); }
  bool synchronize() override {
    bool isStored = false;
    stretches_.note("commit", [&] { isStored = next_->synchronize(); });
    return isStored;
  }
  void beginDecision() override { next_->beginDecision(); }
  void endDecision() override { next_->endDecision(); }

 private:
  const std::shared_ptr<UserDefaults> next_;
  Stretches& stretches_;
};

class NoWorkspace : public Workspace {
 public:
  void openUrl(const Url& /*url*/) override {}
};

}  // namespace

double Stretches::timed(const std::function<void()>& work) {
  const double engine = engine_;
  const double all = microsecondsOf(work);
  return all - (engine_ - engine);
}

void Stretches::note(const std::string& name, const std::function<void()>& work) {
  const double time = timed(work);
  longest_[name] = std::max(longest_[name], time);
}

void Stretches::leaveOut(const std::function<void()>& work) { engine_ += microsecondsOf(work); }

double Stretches::longest(const std::string& name) const {
  const auto found = longest_.find(name);
  return found == longest_.end() ? 0 : found->second;
}

void Stretches::forget() {
  longest_.clear();
  engine_ = 0;
}

void installTimedServices(Stretches& stretches) {
  Platform services = platform();
  services.standardUserDefaults =
      std::make_shared<TimedUserDefaults>(services.standardUserDefaults, stretches);
  services.mainRunLoop = std::make_shared<TimedRunLoop>(services.mainRunLoop, stretches);
  services.interfaceLoader =
      std::make_shared<TimedInterfaceLoader>(services.interfaceLoader, stretches);
  services.workspace = std::make_shared<NoWorkspace>();
  installPlatform(services);
}

}  // namespace qorix::bench
