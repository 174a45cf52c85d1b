#include "definition/AdReader.h"

#include <cstdint>
#include <map>

#include "text/LeadingInteger.h"

namespace qorix {

namespace {

/// The text of the first child of that name; empty if there is none.
std::string_view childText(XmlElement element, std::string_view name) {
  const auto child = element.firstChildNamed(name);
  return child ? child->text() : std::string_view();
}

/// The first child of that name, or the element itself if it has none: where a defect lies.
XmlElement childOrSelf(XmlElement element, std::string_view name) {
  return element.firstChildNamed(name).value_or(element);
}

/// Reads step by step. Each step returns whether the document can be used so far.
class AdReader {
 public:
  bool readFileVersion(XmlElement root);
  bool readTable(XmlElement root, const std::optional<std::string>& host);
  bool chooseAd(XmlElement root);
  bool readChosenAd() { return readAd(*reading_.ad); }
  bool readAd(XmlElement ad);

  AdReading takeReading() { return std::move(reading_); }

 private:
  bool refuse(refusal::Number number, XmlElement element) {
    reading_.defect = {number, element};
    return false;
  }

  bool readTableLine(XmlElement line);
  bool readFields(XmlElement ad);
  void readPromotedNames(XmlElement ad);

  AdReading reading_;
};

/// The version only has to be there: it is compared with nothing.
bool AdReader::readFileVersion(XmlElement root) {
  if (root.name() != tag::kRoot) {
    return refuse(refusal::noFileVersion, root);
  }
  for (const XmlElement data : root.childrenNamed(tag::kData)) {
    if (const auto version = data.firstChildNamed(tag::kFileVersion)) {
      return !version->text().empty() || refuse(refusal::noFileVersion, *version);
    }
  }
  return refuse(refusal::noFileVersion, root);
}

bool AdReader::readTableLine(XmlElement line) {
  if (childText(line, tag::kAppId).empty()) {
    return refuse(refusal::tableLineWithoutAppId, childOrSelf(line, tag::kAppId));
  }
  return !childText(line, tag::kAdId).empty() ||
         refuse(refusal::tableLineWithoutAdId, childOrSelf(line, tag::kAdId));
}

/// Lines after the host's own are not looked at; those before it must be sound.
bool AdReader::readTable(XmlElement root, const std::optional<std::string>& host) {
  for (const XmlElement data : root.childrenNamed(tag::kData)) {
    for (const XmlElement line : data.childrenNamed(tag::kTableLine)) {
      if (!readTableLine(line)) {
        return false;
      }
      if (host && childText(line, tag::kAppId) == *host) {
        reading_.tableLine = line;
        return true;
      }
    }
  }
  return true;
}

/// The first advertisement with the identifier that the table names for the host; the first of all
/// if it names none.
bool AdReader::chooseAd(XmlElement root) {
  const auto identifier =
      reading_.tableLine ? childText(*reading_.tableLine, tag::kAdId) : std::string_view();
  const auto ads = root.childrenNamed(tag::kAd);
  if (ads.empty()) {
    return refuse(refusal::noAd, root);
  }
  for (const XmlElement ad : ads) {
    const auto adid = childText(ad, tag::kAdId);
    if (adid.empty()) {
      return refuse(refusal::adWithoutId, childOrSelf(ad, tag::kAdId));
    }
    if (identifier.empty() || adid == identifier) {
      reading_.ad = ad;
      return true;
    }
  }
  return refuse(refusal::unknownAdId, childOrSelf(*reading_.tableLine, tag::kAdId));
}

bool AdReader::readFields(XmlElement ad) {
  for (std::size_t index = 0; index < kFieldNames.size(); ++index) {
    const auto found = ad.firstChildNamed(kFieldNames[index]);
    if (!found || found->text().empty()) {
      return refuse(refusal::ofField(index), found.value_or(ad));
    }
    reading_.fields.push_back(*found);
  }
  return true;
}

/// One for each child element that holds text. Of several with one name the last counts, in the
/// place of the first.
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
  for (const XmlElement name : ad.childrenNamed(tag::kPromotedName)) {
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
  const auto title = ad.firstChildNamed(tag::kTitle);
  if (!title) {
    return refuse(refusal::noTitle, ad);
  }
  const auto page = ad.firstChildNamed(tag::kPages);
  if (!page) {
    return refuse(refusal::noPages, ad);
  }
  reading_.titles = languagesIn(*title);
  reading_.pages = languagesIn(*page);
  readPromotedNames(ad);
  // That the fields hold texts was seen above.
  if (reading_.titles.empty()) {
    return refuse(refusal::noTitleText, *title);
  }
  return !reading_.pages.empty() || refuse(refusal::noPageText, *page);
}

LocalizedTexts textsOf(const std::vector<XmlElement>& languages) {
  LocalizedTexts texts;
  texts.reserve(languages.size());
  for (const XmlElement language : languages) {
    texts.emplace_back(language.name(), language.text());
  }
  return texts;
}

/// Which advertisement the table names for the host; empty if it names none.
std::string identifierForHost(XmlElement root, const std::optional<std::string>& host) {
  AdReader reader;
  reader.readTable(root, host);
  const auto line = reader.takeReading().tableLine;
  return std::string(line ? childText(*line, tag::kAdId) : std::string_view());
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

XmlOmission pagesOfOtherAds(std::optional<std::string> host) {
  // The table stands before the advertisements, as a rule: it is read once. Behind them it tells
  // nothing yet.
  auto isNeeded = [host = std::move(host), isFirst = true, isTableThere = false,
                   identifier = std::string()](XmlElement root, XmlElement ad) mutable {
    const bool isFirstAd = std::exchange(isFirst, false);
    if (isFirstAd) {
      isTableThere = root.firstChildNamed(tag::kData).has_value();
      identifier = identifierForHost(root, host);
    }
    const bool isMeant = identifier.empty() ? isFirstAd : childText(ad, tag::kAdId) == identifier;
    return isMeant || !isTableThere;
  };
  return {tag::kAd, tag::kPages, std::move(isNeeded)};
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
