#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

#include "definition/LeadingInteger.h"
#include "definition/XmlDocument.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "qorix/MyPushAdUtil.h"

namespace qorix {

namespace {

/// The elements of an advertisement that hold one text each, all of them required.
namespace field {
enum : std::size_t { adid, enable, version, embed, width, height, count, delay, advance, notes };
}

struct FieldRule {
  std::string_view name;
  int line;         // when the element is missing or empty
  int recheckLine;  // when its text is empty in the last check
};

constexpr std::array kFieldRules = {
    FieldRule{"adid", 127, 166},  FieldRule{"enable", 128, 167}, FieldRule{"version", 129, 168},
    FieldRule{"embed", 130, 169}, FieldRule{"width", 131, 170},  FieldRule{"height", 132, 171},
    FieldRule{"count", 133, 172}, FieldRule{"delay", 134, 173},  FieldRule{"advance", 135, 174},
    FieldRule{"notes", 136, 175},
};

/// In the order of the rules.
using FieldTexts = std::array<std::string_view, kFieldRules.size()>;

struct Nothing {
  template <class T>
  operator std::optional<T>() const {
    return std::nullopt;
  }
  operator std::shared_ptr<MyPushAdInfo>() const { return nullptr; }
};

/// Logs the defect that makes the document unusable, and is nothing, whatever the caller returns.
Nothing refuse(int line) {
  logCheck("+[MyPushAdUtil parseXMLWithString:]", line, kFatalError);
  return {};
}

/// The text of the first child of that name; empty when there is none.
std::string_view childText(XmlElement element, std::string_view name) {
  const auto child = element.firstChildNamed(name);
  return child ? child->text() : std::string_view();
}

/// Empty when there is none. It only has to be there: nothing compares it with anything.
std::string_view fileVersion(XmlElement root) {
  for (const XmlElement data : root.childrenNamed("data")) {
    if (const auto version = data.firstChildNamed("file_version")) {
      return version->text();
    }
  }
  return {};
}

/// The identifier of the advertisement that the host table names for `host`; empty when it names
/// none. Lines behind the host's own are not looked at, those before it must be sound.
std::optional<std::string_view> identifierForHost(XmlElement root,
                                                  const std::optional<std::string>& host) {
  for (const XmlElement data : root.childrenNamed("data")) {
    for (const XmlElement line : data.childrenNamed("push_ad_config")) {
      const auto appid = childText(line, "appid");
      if (appid.empty()) {
        return refuse(103);
      }
      const auto adid = childText(line, "adid");
      if (adid.empty()) {
        return refuse(104);
      }
      if (host && appid == *host) {
        return adid;
      }
    }
  }
  return std::string_view();
}

/// The first advertisement of that identifier, or the first of all when the identifier is empty.
std::optional<XmlElement> adWithIdentifier(XmlElement root, std::string_view identifier) {
  const auto ads = root.childrenNamed("push_ad");
  if (ads.empty()) {
    return refuse(119);
  }
  for (const XmlElement ad : ads) {
    const auto adid = childText(ad, "adid");
    if (adid.empty()) {
      return refuse(122);
    }
    if (identifier.empty() || adid == identifier) {
      return ad;
    }
  }
  return refuse(166);
}

std::optional<FieldTexts> fieldTexts(XmlElement ad) {
  FieldTexts texts;
  for (std::size_t index = 0; index < texts.size(); ++index) {
    texts[index] = childText(ad, kFieldRules[index].name);
    if (texts[index].empty()) {
      return refuse(kFieldRules[index].line);
    }
  }
  return texts;
}

/// One entry for each child element that holds text; the last of a name counts.
LocalizedTexts localizedTexts(XmlElement parent) {
  LocalizedTexts texts;
  std::map<std::string_view, std::size_t> indexes;
  for (const XmlElement child : parent.children()) {
    if (child.text().empty()) {
      continue;
    }
    const auto [entry, isNew] = indexes.try_emplace(child.name(), texts.size());
    if (isNew) {
      texts.emplace_back(child.name(), child.text());
    } else {
      texts[entry->second].second = child.text();
    }
  }
  return texts;
}

bool areAllPromoAppsOfAdInstalled(XmlElement ad) {
  const auto apps = ad.childrenNamed("promo_app_name");
  if (apps.empty()) {
    return false;
  }
  std::set<std::string> names;
  for (const XmlElement app : apps) {
    if (!app.text().empty()) {
      names.emplace(app.text());
    }
  }
  return MyPushAdUtil::areAllPromoAppsAlreadyInstalled(names);
}

/// The line of the first defect; 0 when all is well. The fields were checked when they were read.
int defectLine(const FieldTexts& texts, const LocalizedTexts& titles, const LocalizedTexts& pages) {
  for (std::size_t index = 0; index < texts.size(); ++index) {
    if (texts[index].empty()) {
      return kFieldRules[index].recheckLine;
    }
  }
  if (titles.empty()) {
    return 176;
  }
  return pages.empty() ? 177 : 0;
}

std::shared_ptr<MyPushAdInfo> createRecord(const FieldTexts& texts, LocalizedTexts titles,
                                           LocalizedTexts pages) {
  const auto integer = [&](std::size_t index) {
    return leadingInteger<std::int64_t>(texts[index]);
  };
  const auto text = [&](std::size_t index) { return std::string(texts[index]); };
  auto info = MyPushAdInfo::createInstance();
  info->setAdId(integer(field::adid));
  info->setEnable(texts[field::enable] != "0");
  info->setVersion(text(field::version));
  info->setEmbed(integer(field::embed));
  info->setWidth(integer(field::width));
  info->setHeight(integer(field::height));
  info->setCount(integer(field::count));
  info->setDelay(integer(field::delay));
  info->setAdvance(text(field::advance));
  info->setNotes(text(field::notes));
  info->setTitleDict(std::move(titles));
  info->setHtmlContentsDict(std::move(pages));
  return info;
}

}  // namespace

std::shared_ptr<MyPushAdInfo> MyPushAdUtil::parseXMLWithString(
    const std::optional<std::string>& text) {
  const auto& host = platform().mainBundle->bundleIdentifier();
  if (!text) {
    return refuse(87);
  }
  const auto document = XmlDocument::parse(*text);
  if (!document) {
    return refuse(91);
  }
  const XmlElement root = document->root();
  if (root.name() != "rootcfg" || fileVersion(root).empty()) {
    return refuse(94);
  }
  const auto identifier = identifierForHost(root, host);
  const auto ad = identifier ? adWithIdentifier(root, *identifier) : std::nullopt;
  const auto texts = ad ? fieldTexts(*ad) : std::nullopt;
  if (!texts) {
    return nullptr;
  }
  const auto title = ad->firstChildNamed("title");
  if (!title) {
    return refuse(138);
  }
  auto titles = localizedTexts(*title);
  const auto page = ad->firstChildNamed("html_contents");
  if (!page) {
    return refuse(139);
  }
  auto pages = localizedTexts(*page);
  const bool areAllInstalled = areAllPromoAppsOfAdInstalled(*ad);
  if (const int line = defectLine(*texts, titles, pages)) {
    return refuse(line);
  }
  auto info = createRecord(*texts, std::move(titles), std::move(pages));
  info->doParseCustomizationAndMerge();
  if (areAllInstalled) {
    // Behind the customisation, which therefore cannot switch it on again.
    logLine("ZAM: All po-apps installed, Disable it.");
    info->setEnable(false);
  }
  return info;
}

}  // namespace qorix
