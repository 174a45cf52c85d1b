#pragma once

#include <string>

namespace qorix {

/// The members of a one-advertisement document that tests vary.
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
  std::string laterAds = {};  // advertisements behind it
  std::string padding = {};   // in a comment at the end, to reach a length
};

inline std::string makeDocument(const DocumentOf& values = {}) {
  const auto element = [](const std::string& name, const std::string& text) {
    return "<" + name + ">" + text + "</" + name + ">";
  };
  const std::string ad = element("adid", values.adid) + element("enable", values.enable) +
                         element("version", values.version) + element("embed", values.embed) +
                         element("width", values.width) + element("height", values.height) +
                         element("count", values.count) + element("delay", values.delay) +
                         element("advance", "{}") + element("notes", "notes") +
                         element("title", values.title) + element("html_contents", values.html) +
                         values.others;
  return element("rootcfg", element("data", element("file_version", "1") + values.table) +
                                element("push_ad", ad) + values.laterAds) +
         (values.padding.empty() ? "" : "<!--" + values.padding + "-->");
}

}  // namespace qorix
