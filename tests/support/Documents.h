#pragma once

#include <string>

namespace qorix {

inline std::string element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

/// A line of the host table.
inline std::string tableLine(const std::string& appid, const std::string& adid) {
  return element("push_ad_config", element("appid", appid) + element("adid", adid));
}

/// A document with these table lines and advertisements.
inline std::string documentText(const std::string& table, const std::string& ads) {
  return element("rootcfg", element("data", element("file_version", "1") + table) + ads);
}

/// The elements of one advertisement. A test replaces one to change it and empties one to leave it
/// out.
struct AdElements {
  std::string adid = "<adid>11</adid>";
  std::string enable = "<enable>1</enable>";
  std::string version = "<version>2a1</version>";
  std::string embed = "<embed>0</embed>";
  std::string width = "<width>600</width>";
  std::string height = "<height>400</height>";
  std::string count = "<count>3</count>";
  std::string delay = "<delay>5</delay>";
  std::string advance = "<advance>{}</advance>";
  std::string notes = "<notes>autumn offer</notes>";
  std::string title = "<title><en>Try</en></title>";
  std::string htmlContents = "<html_contents><en>&lt;p></en></html_contents>";
  std::string promoAppNames = {};
  std::string others = {};  // further elements

  std::string text() const {
    return element("push_ad", adid + enable + version + embed + width + height + count + delay +
                                  advance + notes + title + htmlContents + promoAppNames + others);
  }
};

/// An advertisement that differs from the others in its identifier alone.
inline std::string adText(const std::string& adid) {
  return AdElements{.adid = element("adid", adid)}.text();
}

/// A document with one advertisement, by what its elements hold.
struct DocumentOf {
  std::string adid = "12";
  std::string enable = "1";
  std::string version = "1a4";
  std::string embed = "1";
  std::string width = "300";
  std::string height = "50";
  std::string count = "3";
  std::string delay = "0";
  std::string title = "<default>Title</default>";
  std::string html = "<default><![CDATA[<p>page</p>]]></default>";
  std::string table = {};     // lines of the host table
  std::string others = {};    // further elements of the advertisement
  std::string laterAds = {};  // advertisements after it
  std::string padding = {};   // in a comment at the end, to reach a length
};

inline std::string makeDocument(const DocumentOf& values = {}) {
  const AdElements ad{.adid = element("adid", values.adid),
                      .enable = element("enable", values.enable),
                      .version = element("version", values.version),
                      .embed = element("embed", values.embed),
                      .width = element("width", values.width),
                      .height = element("height", values.height),
                      .count = element("count", values.count),
                      .delay = element("delay", values.delay),
                      .notes = element("notes", "notes"),
                      .title = element("title", values.title),
                      .htmlContents = element("html_contents", values.html),
                      .others = values.others};
  return documentText(values.table, ad.text() + values.laterAds) +
         (values.padding.empty() ? "" : "<!--" + values.padding + "-->");
}

}  // namespace qorix
