#include "definition/differential/RandomWriting.h"

#include <algorithm>
#include <array>

#include "support/Repeated.h"

namespace qorix {

namespace {

constexpr std::array kXmlDeclarations = {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
                                         "<?xml version='1.0'?>",
                                         "\xEF\xBB\xBF<?xml version='1.1' standalone='no'?>",
                                         "<?xml version='1.0' encoding='ISO-8859-1'?>",
                                         "<?xml  version = '1.42' encoding='utf-16' ?>",
                                         "<?xml version='1.0' standalone='yes'?>",
                                         "\xEF\xBB\xBF"};
constexpr std::array kWrongXmlDeclarations = {"<?xml version='2.0'?>",
                                              " <?xml version='1.0'?>",
                                              "<?xml encoding='UTF-8'?>",
                                              "<?xml version='1.0' standalone='maybe'?>",
                                              "<?xml version='1.0' encoding='1'?>",
                                              "<?xml version='1.0'encoding='UTF-8'?>",
                                              "<?XML version='1.0'?>",
                                              "\xFF\xFE",
                                              "<?xml version='1.'?>",
                                              "<?xml version=1.0?>"};
constexpr std::array kDeclarations = {
    "<!ENTITY e 'inside'>",
    "<!ENTITY e 'again'>",
    "<!ENTITY b '<b>bold &e;</b>'>",
    "<!ENTITY c '<![CDATA[<c>&]]>'>",
    "<!ENTITY d \"&#38;lt;&#65;&e;&e;\">",
    "<!ENTITY f '<notes>of an entity</notes>'>",
    "<!ENTITY n ''>",
    "<!ENTITY x SYSTEM 'http://127.0.0.1:9/x'>",
    "<!ENTITY x PUBLIC '-//x' \"x\">",
    "<!ENTITY % p '<!ENTITY m \"made\">'> %p;",
    "<!ENTITY % q SYSTEM 'q'>%q;",
    "<!NOTATION gif PUBLIC 'gif'>",
    "<!ENTITY u SYSTEM 'u' NDATA gif>",
    "<!ELEMENT rootcfg (data*, (push_ad | x)+)>",
    "<!ELEMENT x (#PCDATA|y)*><!ELEMENT y EMPTY>",
    "<!ATTLIST push_ad a CDATA 'v&#10;' id ID #IMPLIED k (one|two) #FIXED 'one'>",
    "<!ATTLIST data xmlns CDATA 'urn:d'>",
    "<!-- <!ENTITY no 'no'> -->",
    "<?p <!ENTITY ?>",
    " \r\n",
};
constexpr std::array kWrongDeclarations = {"<!ENTITY loop '&loop;'>",
                                           "<!ENTITY open '<b>'>",
                                           "<!ENTITY % p2 'x'> %p2;",
                                           "%undeclared;",
                                           "<!ELEMENT r ANY",
                                           "<!ENTITY a 'x' 'y'>",
                                           "<!ATTLIST r a CDATA '<'>",
                                           "<![IGNORE[]]>",
                                           "<!ENTITY e2 '&'>",
                                           "<!ENTITY e3 '%p;'>",
                                           "<!-- -- -->",
                                           "<!ELEMENT r (a|b,c)>",
                                           "<!ATTLIST r a CDATA '&u2;'>"};
constexpr std::array kReferences = {"&e;", "&e;", "&b;", "&c;", "&d;", "&n;", "&x;", "&m;", "&f;"};
constexpr std::array kWrongReferences = {
    "&u;",        "&loop;",   "&open;", "&undeclared;", "&#0;", "&e",  "&#xFFFE;",        "& ",
    "&#x110000;", "&#xD800;", "]]>",    "&#;",          "<",    "&1;", "<!ELEMENT x ANY>"};
constexpr std::array kBetween = {"<!-- c <rootcfg> & ]]> -->", "<?p <?xml &undeclared; ?>", " ",
                                 "\r\n", "\t"};
constexpr std::array kAttributes = {" a='1'",
                                    " a = \"it's > &lt;\"",
                                    " xmlns='urn:x'",
                                    " xmlns:p='urn:p' p:a='\xC3\xA9\n'",
                                    " q:undeclared=''",
                                    " xml:lang='en' xml:id='1'",
                                    " \r\n",
                                    " id='&#x41;&amp;'"};
constexpr std::array kWrongAttributes = {
    " a=1",      " a",       " a='1' a='2'", " a='1'b='2'",
    " a='<'",    " 1='x'",   " a='&'",       " a='&undeclared;'",
    " a='\x01'", " a='&x;'", " a=''/",       " a='1' \xC3\x97='2'"};
constexpr std::array kInsertions = {
    "<![CDATA[",  "]]>",         "<!--",     "-->",  "<?",   "?>",           "&",
    "<",          ">",           "\"",       "'",    "/",    "</",           "<rootcfg>",
    "</push_ad>", "&#0;",        "%p;",      "\xFF", "\xC3", "\xEF\xBF\xBE", "\xED\xA0\x80",
    "\x01",       "\x7F",        "\xC2\x85", "\r",   "--",   "<!DOCTYPE x>", ";",
    "=",          "\xE2\x82\xAC"};

class XmlWriter {
 public:
  // Faults are rare: one document in eight may have them.
  explicit XmlWriter(Random& random) : random_(random), mayFail_(random.happens(12)) {}

  std::string document(const Node& root) {
    text_ += either(kXmlDeclarations, kWrongXmlDeclarations, 70);
    const bool hasDoctype = random_.happens(30);
    if (hasDoctype) {
      between();
      doctype(root.name);
    }
    between();
    element(root);
    between();
    return std::move(text_);
  }

 private:
  bool isFault() { return mayFail_ && random_.happens(4); }

  /// One of `right` in so many of 100 cases, seldom one of `wrong`, else nothing.
  template <class Right, class Wrong>
  std::string either(const Right& right, const Wrong& wrong, std::size_t percent) {
    if (isFault()) {
      return random_.pick(wrong);
    }
    return random_.happens(percent) ? random_.pick(right) : "";
  }

  void between() {
    while (random_.happens(12)) {
      text_ += random_.pick(kBetween);
    }
    if (random_.happens(1)) {
      // What looks like a long text between tags.
      text_ += "<!-- <b>" + repeated("& ]]> ", random_.between(100, 600)) + "<c> -->";
    }
  }

  void doctype(const std::string& name) {
    text_ += "<!DOCTYPE " + name;
    if (random_.happens(10)) {
      text_ +=
          random_.pick(std::array{" SYSTEM 'x.dtd'", " PUBLIC \"-//x\" 'x.dtd'", " SYSTEM ''"});
    }
    if (random_.happens(85)) {
      text_ += " [";
      declarations_ = random_.between(1, 12);
      text_ += random_.happens(90) ? kDeclarations.front() : "";
      for (std::size_t index = 0; index < declarations_; ++index) {
        text_ += either(kDeclarations, kWrongDeclarations, 90);
      }
      text_ += "]";
    }
    text_ += random_.happens(20) ? " >" : ">";
  }

  void element(const Node& node) {
    std::string attributes;
    while (random_.happens(6) || isFault()) {
      attributes += either(kAttributes, kWrongAttributes, 100);
    }
    if (node.children.empty() && node.text.empty() && random_.happens(50)) {
      text_ += "<" + node.name + attributes + "/>";
      return;
    }
    text_ += "<" + node.name + attributes + ">";
    content(node.text);
    for (const Node& child : node.children) {
      if (child.name.empty()) {
        content(child.text);
      } else {
        element(child);
      }
      between();
      if (declarations_ > 4 && random_.happens(2)) {
        text_ += "&f;";
      }
    }
    text_ += "</" + node.name + (random_.happens(3) ? "\n>" : ">");
  }

  void content(const std::string& text) {
    if (text.empty()) {
      return;
    }
    if (declarations_ > 0 && random_.happens(8)) {
      text_ += random_.pick(kReferences);
    }
    if (isFault()) {
      text_ += random_.pick(kWrongReferences);
    }
    if (random_.happens(3)) {
      longCharacters();
    }
    if (random_.happens(20) && text.find("]]>") == std::string::npos) {
      section(text);
    } else {
      characters(text);
    }
  }

  // Long texts between tags, and long sections, are read in another way than short ones.
  void longCharacters() {
    text_ += repeated(random_.pick(std::array{"&lt;p&gt;\xC3\xA9\r\n", "]] &gt;&amp;&quot;&apos;",
                                              "\xE6\x97\xA5\t\r", "plain > text"}),
                      random_.between(100, 600));
    if (isFault()) {
      text_ += random_.pick(std::array{"\x02", "\xFF", "\xEF\xBF\xBF", "]]>", "&", "&lt"});
    }
  }

  void section(const std::string& text) {
    text_ += "<![CDATA[" + text;
    if (random_.happens(10)) {
      text_ +=
          repeated(random_.pick(std::array{"<p>\xC3\xA9\r\n", "]] >&amp;", "\xE6\x97\xA5\t\r"}),
                   random_.between(100, 600));
    }
    if (isFault()) {
      text_ += random_.pick(std::array{"\x02", "\xFF", "\xEF\xBF\xBF"});
    }
    text_ += "]]>";
    between();
  }

  void characters(const std::string& text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
      const char c = text[index];
      const bool isAscii = c >= 0;
      if (isAscii && random_.happens(2)) {
        text_ += (random_.happens(50) ? "&#" : "&#00") + std::to_string(c) + ";";
      } else if (isAscii && random_.happens(1)) {
        text_ += random_.pick(std::array{"<!-- in -->", "<?in ?>", "<![CDATA[]]>"});
        --index;
      } else if (c == '<') {
        text_ += random_.pick(std::array{"&lt;", "&#60;", "&#x3c;", "<![CDATA[<]]>"});
      } else if (c == '&') {
        text_ += random_.pick(std::array{"&amp;", "&#38;", "&#x26;"});
      } else if (c == '>') {
        text_ += "&gt;";
      } else if (c == '"' && random_.happens(10)) {
        text_ += "&quot;";
      } else {
        text_ += c;
      }
    }
  }

  Random& random_;
  const bool mayFail_;
  std::size_t declarations_ = 0;
  std::string text_;
};

}  // namespace

std::string writtenAtRandom(Random& random, const Node& root) {
  return XmlWriter(random).document(root);
}

void damage(Random& random, std::string& text) {
  const std::size_t changes = random.between(1, 3);
  for (std::size_t change = 0; change < changes && !text.empty(); ++change) {
    const std::size_t place = random.below(text.size());
    const std::size_t size = std::min(random.between(1, 12), text.size() - place);
    switch (random.below(7)) {
      case 0:
        text.erase(place, size);
        break;
      case 1:
      case 2:
        text.insert(place, random.pick(kInsertions));
        break;
      case 3:
        text[place] = static_cast<char>(random.below(256));
        break;
      case 4:
        text.insert(place, text.substr(random.below(text.size()), size * 8));
        break;
      case 5:
        std::swap(text[place], text[random.below(text.size())]);
        break;
      default:
        if (random.happens(20)) {
          text.resize(place);
        } else {
          text[place] =
              static_cast<char>(static_cast<unsigned char>(text[place]) ^ (1U << random.below(8)));
        }
    }
  }
}

}  // namespace qorix
