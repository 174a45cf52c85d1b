#pragma once

#include <string>
#include <vector>

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdInfo.h>

namespace qorix::tools::preview {

/// The advertisement in one line: what it is, where it goes and how large it is.
std::string describeAd(const MyPushAdInfo& info);

/// What a host can read from the notification, in one line.
std::string describeEvent(const MyPushAdEvent& event);

/// Why a host never shows it although it could, for instance switched off. Empty if there is no
/// reason.
/// `allAppsInstalled`: whether the reader of the document switched it off for that.
std::vector<std::string> reasonsOfHost(const MyPushAdInfo& info, bool allAppsInstalled);

/// Why it can be shown nowhere; empty if it can.
std::vector<std::string> reasonsOfPlace(const MyPushAdInfo& info);

/// Why nothing is seen of it where it is shown; empty if there is something to see. Reads the page
/// for the user's language.
std::vector<std::string> reasonsOfContent(const MyPushAdInfo& info);

}  // namespace qorix::tools::preview
