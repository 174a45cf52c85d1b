#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <regex>
#include <string>

#include <qorix/MyPushAdInfo.h>
#include <qorix/MyPushAdUtil.h>

#include "docs/Guide.h"
#include "support/DefinitionTest.h"
#include "support/Documents.h"

namespace qorix::test {

/// The guide, and the library to compare it with.
class GuideTest : public DefinitionTest {
 protected:
  std::shared_ptr<MyPushAdInfo> parse(const std::string& document) {
    return MyPushAdUtil::parseXMLWithString(document);
  }

  /// `document` with the first element of that name replaced by `text`.
  static std::string with(const std::string& document, const std::string& name,
                          const std::string& text) {
    const std::regex whole("<" + name + ">[\\s\\S]*?</" + name + ">");
    EXPECT_TRUE(std::regex_search(document, whole)) << name;
    std::string format;
    for (const char c : text) {
      format += c == '$' ? "$$" : std::string(1, c);
    }
    return std::regex_replace(document, whole, format, std::regex_constants::format_first_only);
  }
  /// The guide's smallest document, changed so.
  std::string minimalWith(const std::string& name, const std::string& text) const {
    return with(minimal_, name, text);
  }
  /// The same with another text in the element.
  std::string minimalHolding(const std::string& name, const std::string& text) const {
    return minimalWith(name, element(name, text));
  }
  /// The smallest document with something more in that element, in front.
  std::string minimalPlus(const std::string& name, const std::string& text) const {
    std::string document = minimal_;
    const std::string tag = "<" + name + ">";
    return document.replace(document.find(tag), tag.size(), tag + text);
  }

  const Guide guide_;
  const std::string minimal_ = guide_.block("minimal");
};

}  // namespace qorix::test
