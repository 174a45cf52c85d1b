#pragma once

// For hosts.

namespace qorix {

// Names. All are posted to the platform's notification center on the main thread, after the code
// that posts has returned to the loop. The object of the first three is the view of the
// advertisement, of the last one the MyPushAdViewController.

/// An advertisement is about to be shown (and has been by the time this arrives).
inline constexpr const char* kPushAdWillShowNotification = "ZAMPushAdWillShowNotification";
/// The user has closed a banner or the pop-up window.
inline constexpr const char* kPushAdDidCloseNotification = "ZAMPushAdDidCloseNotification";
/// The page asks the host to offer an in-app purchase.
inline constexpr const char* kPushAdOpenIAPNotification = "ZAMPushAdOpenIAPNotification";
/// The user has activated a link in the page, whatever becomes of it.
inline constexpr const char* kPushAdIsTriggeringNavigationNotification =
    "ZAMPushAdIsTriggeringNavigationNotification";

// Keys of the first three's user info.

/// The MyPushAdInfo.
inline constexpr const char* kPushAdInfoKey = "ZAMPushAdInfoKey";
/// A boolean: not shown as a banner. Tells pop-ups from banners.
inline constexpr const char* kPushAdIsPopupWindowKey = "ZAMPushAdIsPopupWindowKey";
/// The host's View, while it exists.
inline constexpr const char* kPushAdHostViewKey = "ZAMPushAdHostViewKey";
/// The one pop-up Window, where the presenter has it; banners made after it carry it too.
inline constexpr const char* kPushAdPopupWindowKey = "ZAMPushAdPopupWindowKey";
/// The Url of the purchase; only in kPushAdOpenIAPNotification.
inline constexpr const char* kPushAdActionURLKey = "ZAMPushAdActionURLKey";

// Keys of the last one's user info.

/// The DomHtmlElement that was activated.
inline constexpr const char* kPushAdActionHTMLElementKey = "ZAMPushAdActionHTMLElementKey";
/// Its id, when not empty: a text.
inline constexpr const char* kPushAdActionHTMLElementIdNameKey =
    "ZAMPushAdActionHTMLElementIdNameKey";
/// Its class attribute, when not empty: a text.
inline constexpr const char* kPushAdActionHTMLElementClassNameKey =
    "ZAMPushAdActionHTMLElementClassNameKey";

}  // namespace qorix
