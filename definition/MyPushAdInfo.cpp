#include <utf8.h>

#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "definition/Json.h"
#include "definition/LanguageChoice.h"

namespace qorix {

namespace {

bool isEmpty(const std::optional<std::string>& text) { return !text || text->empty(); }

template <class Member>
const Member* pointerTo(const std::optional<Member>& member) {
  return member ? &*member : nullptr;
}

std::optional<std::int64_t> integerMember(const Dictionary& entry, const std::string& name) {
  const Value* value = find(entry, name);
  return value == nullptr ? std::nullopt : value->integerValue();
}

const std::string* nonEmptyTextMember(const Dictionary& entry, const std::string& name) {
  const Value* value = find(entry, name);
  const auto* text = value == nullptr ? nullptr : value->as<std::string>();
  return text == nullptr || text->empty() ? nullptr : text;
}

}  // namespace

std::optional<std::string> MyPushAdInfo::localizedTitle() const {
  return localizedValueInDict(pointerTo(titleDict_));
}

std::optional<std::string> MyPushAdInfo::localizedHtmlString() const {
  return localizedValueInDict(pointerTo(htmlContentsDict_));
}

std::optional<std::string> MyPushAdInfo::localizedValueInDict(const LocalizedTexts* texts) {
  const auto* entry = texts == nullptr ? nullptr : entryForLanguage(*texts, preferredLanguage());
  auto value = entry == nullptr ? std::nullopt : std::optional(entry->second);
  if (isEmpty(value)) {
    logCheck("+[MyPushAdInfo localizedValueInDict:]", 130, kVerifyFailed);
  }
  return value;
}

void MyPushAdInfo::doCheck() const {
  const auto verify = [](int line, bool isWrong) {
    if (isWrong) {
      logCheck("-[MyPushAdInfo doCheck]", line, kVerifyFailed);
    }
  };
  const bool isEnabled = enable();
  const bool isEnabledAfterAll = enable();
  verify(97, adId_ < 1);
  verify(98, !isEnabled && isEnabledAfterAll);  // stored values never do this; kept deliberately
  verify(99, isEmpty(version_));
  verify(100, embed_ < 0);
  verify(101, width_ < 1);
  verify(102, height_ < 1);
  verify(103, count_ < 1);
  verify(104, delay_ < 0);
  verify(105, isEmpty(advance_));
  verify(106, !advanceDict_);
  verify(107, isEmpty(notes_));
  verify(108, !titleDict_);
  verify(109, !htmlContentsDict_);
}

void MyPushAdInfo::doParseCustomizationAndMerge() {
  const auto refuse = [](int line) {
    logCheck("-[MyPushAdInfo doParseCustomizationAndMerge]", line, kFatalError);
  };
  const auto& identifier = platform().mainBundle->bundleIdentifier();
  if (!advance_) {
    return refuse(146);
  }
  if (isEmpty(identifier)) {
    return refuse(147);
  }
  if (!utf8::is_valid(advance_->begin(), advance_->end())) {
    return refuse(150);
  }
  const auto customization = parseJson(*advance_);
  const auto* hosts = customization ? customization->as<Dictionary>() : nullptr;
  if (hosts == nullptr) {
    return refuse(153);
  }
  const Value* host = find(*hosts, *identifier);
  if (const auto* entry = host == nullptr ? nullptr : host->as<Dictionary>()) {
    advanceDict_ = *entry;
    mergeCustomization(*entry);
  }
}

void MyPushAdInfo::mergeCustomization(const Dictionary& entry) {
  const auto mergeInteger = [&](const std::string& name, std::int64_t& member) {
    member = integerMember(entry, name).value_or(member);
  };
  const auto mergeText = [&](const std::string& name, std::optional<std::string>& member) {
    if (const auto* text = nonEmptyTextMember(entry, name)) {
      member = *text;
    }
  };
  enable_ = integerMember(entry, "enable").value_or(enable_ ? 1 : 0) != 0;
  mergeText("version", version_);
  mergeInteger("embed", embed_);
  mergeInteger("width", width_);
  mergeInteger("height", height_);
  mergeInteger("offsetx", offsetx_);
  mergeInteger("offsety", offsety_);
  mergeInteger("count", count_);
  mergeInteger("delay", delay_);
  mergeText("notes", notes_);
}

}  // namespace qorix
