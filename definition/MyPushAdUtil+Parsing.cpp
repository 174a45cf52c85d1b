#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "definition/AdReader.h"
#include "definition/XmlDocument.h"

namespace qorix {

namespace {

/// Logs why the document cannot be used. Returns what the caller is to return.
std::nullptr_t refuse(refusal::Number line) {
  logCheck("+[MyPushAdUtil parseXMLWithString:]", line, kFatalError);
  return nullptr;
}

}  // namespace

std::shared_ptr<MyPushAdInfo> MyPushAdUtil::parseXMLWithString(
    const std::optional<std::string>& text) {
  const auto& host = platform().mainBundle->bundleIdentifier();
  if (!text) {
    return refuse(refusal::noText);
  }
  auto document = XmlDocument::parse(*text, pagesOfOtherAds(host));
  if (!document) {
    return refuse(refusal::notWellFormed);
  }
  AdReading reading = readAdForHost(*document, host);
  if (reading.ad && !reading.ad->isWhole()) {
    document.reset();  // its memory first
    document = XmlDocument::parse(*text);
    if (!document) {
      return refuse(refusal::notWellFormed);  // for want of memory
    }
    reading = readAdForHost(*document, host);
  }
  const bool areAllInstalled =
      reading.promotedNames && areAllPromoAppsAlreadyInstalled(reading.promotedNames);
  if (reading.defect) {
    return refuse(reading.defect->line);
  }
  auto info = createRecord(reading);
  info->doParseCustomizationAndMerge();
  if (areAllInstalled) {
    // After the customisation, which therefore cannot switch it on again.
    logLine("ZAM: All po-apps installed, Disable it.");
    info->setEnable(false);
  }
  return info;
}

}  // namespace qorix
