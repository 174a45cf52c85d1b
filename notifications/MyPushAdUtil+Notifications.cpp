#include <utility>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>
#include <qorix/platform/View.h>
#include <qorix/platform/WebView.h>

namespace qorix {

namespace {

const Notification* asNotification(const Object* object) {
  return dynamic_cast<const Notification*>(object);
}

/// The user info of what should be a notification; null, after a log line with the number of the
/// fault, when it is none or carries none.
const Dictionary* userInfoOf(const Object* notification, const char* method, int notANotification,
                             int withoutUserInfo) {
  const auto* real = asNotification(notification);
  if (real == nullptr) {
    logCheck(method, notANotification, kFatalError);
    return nullptr;
  }
  if (!real->userInfo()) {
    logCheck(method, withoutUserInfo, kFatalError);
    return nullptr;
  }
  return &*real->userInfo();
}

template <class T>
std::shared_ptr<T> objectUnder(const Dictionary& userInfo, const char* key) {
  const Value* value = find(userInfo, key);
  return value == nullptr ? nullptr : value->object<T>();
}

void appendText(std::string& description, const Dictionary& userInfo, const char* key,
                const char* label) {
  const Value* value = find(userInfo, key);
  const auto* text = value == nullptr ? nullptr : value->as<std::string>();
  if (text != nullptr && !text->empty()) {
    description += "(" + std::string(label) + " is " + *text + ")";
  }
}

}  // namespace

void MyPushAdUtil::postOnMainThreadNotificationName(const std::string& name,
                                                    const std::shared_ptr<Object>& object,
                                                    const std::optional<Dictionary>& userInfo) {
  const auto notification = std::make_shared<const Notification>(name, object, userInfo);
  platform().mainRunLoop->dispatchAsync(
      [notification] { platform().notificationCenter->post(*notification); });
}

bool MyPushAdUtil::checkEqualsWithHostView(const Object* view, const Object* notification) {
  constexpr const char* kMethod = "+[MyPushAdUtil checkEqualsWithHostView:forNotification:]";
  if (dynamic_cast<const View*>(view) == nullptr) {
    logCheck(kMethod, 309, kFatalError);
    return false;
  }
  const auto* userInfo = userInfoOf(notification, kMethod, 310, 311);
  return userInfo != nullptr && objectUnder<View>(*userInfo, kPushAdHostViewKey).get() == view;
}

bool MyPushAdUtil::isPopupWindowForNotification(const Object* notification) {
  const auto* userInfo =
      userInfoOf(notification, "+[MyPushAdUtil isPopupWindowForNotification:]", 334, 335);
  if (userInfo == nullptr) {
    return false;
  }
  const Value* value = find(*userInfo, kPushAdIsPopupWindowKey);
  return value != nullptr && value->booleanValue().value_or(false);
}

std::shared_ptr<const MyPushAdInfo> MyPushAdUtil::fetchPushAdInfoForNotification(
    const Object* notification) {
  const auto* real = asNotification(notification);
  return real == nullptr || !real->userInfo()
             ? nullptr
             : objectUnder<const MyPushAdInfo>(*real->userInfo(), kPushAdInfoKey);
}

std::optional<std::string> MyPushAdUtil::fetchHTMLElementDescriptionForNotification(
    const Object* notification) {
  constexpr const char* kMethod = "+[MyPushAdUtil fetchHTMLElementDescriptionForNotification:]";
  const auto* userInfo = userInfoOf(notification, kMethod, 375, 376);
  if (userInfo == nullptr) {
    return std::nullopt;
  }
  if (objectUnder<DomHtmlElement>(*userInfo, kPushAdActionHTMLElementKey) == nullptr) {
    logCheck(kMethod, 379, kFatalError);
    return std::nullopt;
  }
  std::string description = "{";
  appendText(description, *userInfo, kPushAdActionHTMLElementIdNameKey, "idName");
  appendText(description, *userInfo, kPushAdActionHTMLElementClassNameKey, "className");
  return description + "}";
}

}  // namespace qorix
