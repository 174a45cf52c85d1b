#include <string>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdOperator.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Log.h>

namespace qorix {

namespace {

void post(const char* name, const std::shared_ptr<View>& adView,
          const std::optional<Dictionary>& userInfo, const char* method, int line) {
  if (adView == nullptr) {
    logCheck(method, line, kVerifyFailed);
  }
  MyPushAdUtil::postOnMainThreadNotificationName(name, adView, userInfo);
}

}  // namespace

std::optional<Dictionary> MyPushAdOperator::composeNotificationUserInfo() const {
  if (myPushAdInfo_ == nullptr) {
    return std::nullopt;
  }
  Dictionary userInfo;
  userInfo[kPushAdInfoKey] = myPushAdInfo_;
  userInfo[kPushAdIsPopupWindowKey] = !isAdShownAsBanner();
  if (const auto host = hostView()) {
    userInfo[kPushAdHostViewKey] = host;
  }
  if (popupAdWindow_ != nullptr) {
    userInfo[kPushAdPopupWindowKey] = popupAdWindow_;
  }
  return userInfo;
}

void MyPushAdOperator::postPushAdWillShowNotification() {
  post(kPushAdWillShowNotification, adView(), composeNotificationUserInfo(),
       "-[MyPushAdOperator postPushAdWillShowNotification]", 518);
}

void MyPushAdOperator::postPushAdDidCloseNotification() {
  post(kPushAdDidCloseNotification, adView(), composeNotificationUserInfo(),
       "-[MyPushAdOperator postPushAdDidCloseNotification]", 530);
}

void MyPushAdOperator::postPushAdOpenIAPNotificationWithURL(const std::optional<Url>& url) {
  auto userInfo = composeNotificationUserInfo();
  if (url && userInfo) {
    (*userInfo)[kPushAdActionURLKey] = *url;
  }
  post(kPushAdOpenIAPNotification, adView(), userInfo,
       "-[MyPushAdOperator postPushAdOpenIAPNotificationWithURL:]", 542);
}

}  // namespace qorix
