#include "definition/AdReader.h"

#include <cstdint>
#include <map>

#include "text/LeadingInteger.h"

namespace qorix {

namespace {

/// Logged for a field whose element is missing or empty: one number each, in the fields' order.
constexpr int kFirstFieldLine = 127;

/// The text of the first child of that name; empty when there is none.
std::string_view childText(XmlElement element, std::string_view name) {
  const auto child = element.firstChildNamed(name);
  return child ? child->text() : std::string_view();
}

/// The first child of that name, or the element itself when it has none: where a defect lies.
XmlElement childOrSelf(XmlElement element, std::string_view name) {
  return element.firstChildNamed(name).value_or(element);
}

/// Reads step by step; each step answers whether all is well so far.
class AdReader {
 public:
  bool readFileVersion(XmlElement root);
  bool readTable(XmlElement root, const std::optional<std::string>& host);
  bool chooseAd(XmlElement root);
  bool readChosenAd() { return readAd(*reading_.ad); }
  bool readAd(XmlElement ad);

  AdReading takeReading() { return std::move(reading_); }

 private:
  bool refuse(int line, XmlElement element) {
    reading_.defect = {line, element};
    return false;
  }

  bool readTableLine(XmlElement line);
  bool readFields(XmlElement ad);
  void readPromotedNames(XmlElement ad);

  AdReading reading_;
};

/// It only has to be there: nothing compares it with anything.
bool AdReader::readFileVersion(XmlElement root) {
  if (root.name() != "rootcfg") {
    return refuse(94, root);
  }
  for (const XmlElement data : root.childrenNamed("data")) {
    if (const auto version = data.firstChildNamed("file_version")) {
      return !version->text().empty() || refuse(94, *version);
    }
  }
  return refuse(94, root);
}

bool AdReader::readTableLine(XmlElement line) {
  if (childText(line, "appid").empty()) {
    return refuse(103, childOrSelf(line, "appid"));
  }
  return !childText(line, "adid").empty() || refuse(104, childOrSelf(line, "adid"));
}

/// Lines behind the host's own are not looked at, those before it must be sound.
bool AdReader::readTable(XmlElement root, const std::optional<std::string>& host) {
  for (const XmlElement data : root.childrenNamed("data")) {
    for (const XmlElement line : data.childrenNamed("push_ad_config")) {
      if (!readTableLine(line)) {
        return false;
      }
      if (host && childText(line, "appid") == *host) {
        reading_.tableLine = line;
        return true;
      }
    }
  }
  return true;
}

/// The first advertisement of the identifier that the table names, or else the first of all.
bool AdReader::chooseAd(XmlElement root) {
  const auto identifier =
      reading_.tableLine ? childText(*reading_.tableLine, "adid") : std::string_view();
  const auto ads = root.childrenNamed("push_ad");
  if (ads.empty()) {
    return refuse(119, root);
  }
  for (const XmlElement ad : ads) {
    const auto adid = childText(ad, "adid");
    if (adid.empty()) {
      return refuse(122, childOrSelf(ad, "adid"));
    }
    if (identifier.empty() || adid == identifier) {
      reading_.ad = ad;
      return true;
    }
  }
  return refuse(166, childOrSelf(*reading_.tableLine, "adid"));
}

bool AdReader::readFields(XmlElement ad) {
  int line = kFirstFieldLine;
  for (const std::string_view name : kFieldNames) {
    const auto element = ad.firstChildNamed(name);
    if (!element || element->text().empty()) {
      return refuse(line, element.value_or(ad));
    }
    reading_.fields.push_back(*element);
    ++line;
  }
  return true;
}

/// One for each child element that holds text; the last of a name counts.
std::vector<XmlElement> languagesIn(XmlElement parent) {
  std::vector<XmlElement> languages;
  std::map<std::string_view, std::size_t> indexes;
  for (const XmlElement child : parent.children()) {
    if (child.text().empty()) {
      continue;
    }
    const auto [entry, isNew] = indexes.try_emplace(child.name(), languages.size());
    if (isNew) {
      languages.push_back(child);
    } else {
      languages[entry->second] = child;
    }
  }
  return languages;
}

void AdReader::readPromotedNames(XmlElement ad) {
  for (const XmlElement name : ad.childrenNamed("promo_app_name")) {
    auto& names =
        reading_.promotedNames ? *reading_.promotedNames : reading_.promotedNames.emplace();
    if (!name.text().empty()) {
      names.emplace(name.text());
    }
  }
}

bool AdReader::readAd(XmlElement ad) {
  reading_.ad = ad;
  if (!readFields(ad)) {
    return false;
  }
  const auto title = ad.firstChildNamed("title");
  if (!title) {
    return refuse(138, ad);
  }
  const auto page = ad.firstChildNamed("html_contents");
  if (!page) {
    return refuse(139, ad);
  }
  reading_.titles = languagesIn(*title);
  reading_.pages = languagesIn(*page);
  readPromotedNames(ad);
  // The texts of the fields, which are numbers 166 to 175 here, were looked at above.
  if (reading_.titles.empty()) {
    return refuse(176, *title);
  }
  return !reading_.pages.empty() || refuse(177, *page);
}

LocalizedTexts textsOf(const std::vector<XmlElement>& languages) {
  LocalizedTexts texts;
  texts.reserve(languages.size());
  for (const XmlElement language : languages) {
    texts.emplace_back(language.name(), language.text());
  }
  return texts;
}

}  // namespace

AdReading readAdForHost(const XmlDocument& document, const std::optional<std::string>& host) {
  AdReader reader;
  const XmlElement root = document.root();
  if (reader.readFileVersion(root) && reader.readTable(root, host) && reader.chooseAd(root)) {
    reader.readChosenAd();
  }
  return reader.takeReading();
}

AdReading readAd(XmlElement ad) {
  AdReader reader;
  reader.readAd(ad);
  return reader.takeReading();
}

std::shared_ptr<MyPushAdInfo> createRecord(const AdReading& reading) {
  const auto integer = [&](field::Index index) {
    return leadingInteger<std::int64_t>(reading.text(index));
  };
  const auto text = [&](field::Index index) { return std::string(reading.text(index)); };
  auto info = MyPushAdInfo::createInstance();
  info->setAdId(integer(field::adid));
  info->setEnable(reading.text(field::enable) != "0");
  info->setVersion(text(field::version));
  info->setEmbed(integer(field::embed));
  info->setWidth(integer(field::width));
  info->setHeight(integer(field::height));
  info->setCount(integer(field::count));
  info->setDelay(integer(field::delay));
  info->setAdvance(text(field::advance));
  info->setNotes(text(field::notes));
  info->setTitleDict(textsOf(reading.titles));
  info->setHtmlContentsDict(textsOf(reading.pages));
  return info;
}

}  // namespace qorix
