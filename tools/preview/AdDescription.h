#pragma once

#include <string>
#include <vector>

#include <qorix/MyPushAdInfo.h>

/// The advertisement in one line: what it is, where it goes and how large it is.
std::string describeAd(const qorix::MyPushAdInfo& info);

/// Why a host never shows it although it could: switched off, say. Empty when there is no reason.
/// `allAppsInstalled`: whether the reader of the document switched it off for that.
std::vector<std::string> reasonsOfHost(const qorix::MyPushAdInfo& info, bool allAppsInstalled);

/// Why it can be shown nowhere; empty when it can.
std::vector<std::string> reasonsOfPlace(const qorix::MyPushAdInfo& info);

/// Why nothing is seen of it where it is shown; empty when there is something to see. Reads the
/// page for the user's language.
std::vector<std::string> reasonsOfContent(const qorix::MyPushAdInfo& info);
