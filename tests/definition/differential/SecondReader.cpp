#include "definition/differential/SecondReader.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <regex>
#include <string_view>

#include "definition/differential/SecondJson.h"

namespace qorix {

namespace {

template <auto function>
struct Freer {
  template <class T>
  void operator()(T* pointer) const {
    function(pointer);
  }
};
using Tree = std::unique_ptr<xmlDoc, Freer<xmlFreeDoc>>;
using TreeContext = std::unique_ptr<xmlXPathContext, Freer<xmlXPathFreeContext>>;
using TreeParser = std::unique_ptr<xmlParserCtxt, Freer<xmlFreeParserCtxt>>;
using PathResult = std::unique_ptr<xmlXPathObject, Freer<xmlXPathFreeObject>>;
using CompiledPath = std::unique_ptr<xmlXPathCompExpr, Freer<xmlXPathFreeCompExpr>>;

/// External entities count as empty.
xmlParserInputPtr emptyEntity(const char* /*url*/, const char* /*id*/, xmlParserCtxtPtr parser) {
  return xmlNewIOInputStream(parser, xmlParserInputBufferCreateMem("", 0, XML_CHAR_ENCODING_NONE),
                             XML_CHAR_ENCODING_NONE);
}

/// Those of a document type count as a comment: libxml2 stumbles over the second use of a blank
/// one.
void declareEntity(void* parser, const xmlChar* name, int type, const xmlChar* publicId,
                   const xmlChar* systemId, xmlChar* content) {
  std::string comment = "<!-- -->";
  if (type == XML_EXTERNAL_PARAMETER_ENTITY) {
    xmlSAX2EntityDecl(parser, name, XML_INTERNAL_PARAMETER_ENTITY, nullptr, nullptr,
                      reinterpret_cast<xmlChar*>(comment.data()));
  } else {
    xmlSAX2EntityDecl(parser, name, type, publicId, systemId, content);
  }
}

/// The names of the fourth edition of XML 1.0 are those that count. That option of libxml2 also
/// refuses every version but 1.0, while any 1.x is to be read like it.
std::string asVersionOnePointZero(const std::string& document) {
  static const std::regex kVersion(
      "^((?:\xEF\xBB\xBF)?<\\?xml[ \\t\\r\\n]+version[ \\t\\r\\n]*="
      "[ \\t\\r\\n]*)(['\"])1\\.[0-9]+\\2");
  return std::regex_replace(document.substr(0, 200), kVersion, "$1$021.0$2") +
         (document.size() > 200 ? document.substr(200) : "");
}

/// What libxml2 has to say is of no interest.
void drop(void* /*context*/, const char* /*format*/, ...) {}

Tree treeOf(const std::string& document) {
  constexpr int kOptions = XML_PARSE_NOENT | XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOERROR |
                           XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC | XML_PARSE_OLD10;
  // libxml2 takes a zero byte behind the root element for the end.
  if (document.find('\0') != std::string::npos) {
    return nullptr;
  }
  xmlSetExternalEntityLoader(emptyEntity);
  xmlSetGenericErrorFunc(nullptr, drop);
  const std::string text = asVersionOnePointZero(document);
  const TreeParser parser(xmlNewParserCtxt());
  parser->sax->entityDecl = declareEntity;
  Tree tree(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr,
                              "UTF-8", kOptions));
  return parser->wellFormed == 1 ? std::move(tree) : nullptr;
}

/// Reads along the steps of the description of the format.
class SecondReader {
 public:
  explicit SecondReader(const Machine& machine) : machine_(machine) {}

  Reading read(const std::string& document) {
    if (const auto record = std::make_shared<MyPushAdInfo>(); readInto(*record, document)) {
      reading_.record = record;
    }
    return std::move(reading_);
  }

 private:
  bool fail(int line) {
    log("+[MyPushAdUtil parseXMLWithString:]", line);
    return false;
  }

  void log(const std::string& place, int line) {
    reading_.lines.push_back(place + " " + std::to_string(line) +
                             ": ZAM <=> ***Error***: fatal error found, go to pre-defined "
                             "condition.");
  }

  /// `path` with every step as a test of the name as it is written, whatever its namespace is.
  static std::string byWrittenNames(const std::string& path) {
    return std::regex_replace(path, std::regex("/([a-z_]+)"), "/*[name()='$1']");
  }

  std::vector<xmlNodePtr> nodes(xmlNodePtr from, const std::string& path) {
    static std::map<std::string, CompiledPath> compiled;
    auto& expression = compiled[path];
    if (expression == nullptr) {
      const std::string names = byWrittenNames(path);
      expression.reset(xmlXPathCompile(reinterpret_cast<const xmlChar*>(names.c_str())));
    }
    context_->node = from;
    const PathResult result(xmlXPathCompiledEval(expression.get(), context_.get()));
    std::vector<xmlNodePtr> found;
    const int count = xmlXPathNodeSetGetLength(result->nodesetval);
    found.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
      found.push_back(xmlXPathNodeSetItem(result->nodesetval, index));
    }
    return found;
  }

  static std::string text(xmlNodePtr node) {
    const std::unique_ptr<xmlChar, Freer<free>> content(xmlXPathCastNodeToString(node));
    return reinterpret_cast<const char*>(content.get());
  }

  /// The text of the first node; empty if there is no node.
  std::string firstText(xmlNodePtr from, const std::string& path) {
    const auto found = nodes(from, path);
    return found.empty() ? "" : text(found.front());
  }

  static std::string writtenName(xmlNodePtr node) {
    const std::string name = reinterpret_cast<const char*>(node->name);
    const bool isPrefixed = node->ns != nullptr && node->ns->prefix != nullptr;
    return (isPrefixed ? reinterpret_cast<const char*>(node->ns->prefix) + std::string(":") : "") +
           name;
  }

  LocalizedTexts languages(xmlNodePtr parent) {
    LocalizedTexts texts;
    std::map<std::string, std::size_t> places;
    for (xmlNodePtr child : nodes(parent, "./*")) {
      const std::string value = text(child);
      const std::string name = writtenName(child);
      if (value.empty()) {
        continue;
      }
      // The later one wins; entries keep the order of the document.
      if (const auto place = places.find(name); place != places.end()) {
        texts[place->second].second = value;
      } else {
        places[name] = texts.size();
        texts.emplace_back(name, value);
      }
    }
    return texts;
  }

  /// The identifier that the host table has for this host, or an empty one. Nothing: the table is
  /// not sound.
  std::optional<std::string> identifierInTable(xmlNodePtr document) {
    for (xmlNodePtr line : nodes(document, "./rootcfg/data/push_ad_config")) {
      const std::string appid = firstText(line, "./appid");
      const std::string adid = firstText(line, "./adid");
      if (appid.empty() || adid.empty()) {
        fail(appid.empty() ? 103 : 104);
        return std::nullopt;
      }
      if (machine_.host && !machine_.host->empty() && *machine_.host == appid) {
        return adid;
      }
    }
    return "";
  }

  xmlNodePtr advertisement(xmlNodePtr document, const std::string& identifier) {
    const auto ads = nodes(document, "./rootcfg/push_ad");
    if (ads.empty()) {
      fail(119);
      return nullptr;
    }
    for (xmlNodePtr ad : ads) {
      const std::string adid = firstText(ad, "./adid");
      if (adid.empty()) {
        fail(122);
        return nullptr;
      }
      if (identifier.empty() || adid == identifier) {
        return ad;
      }
    }
    fail(166);
    return nullptr;
  }

  bool readTexts(xmlNodePtr ad, std::map<std::string, std::string>& texts) {
    int line = 127;
    for (const char* name : {"adid", "enable", "version", "embed", "width", "height", "count",
                             "delay", "advance", "notes"}) {
      texts[name] = firstText(ad, "./" + std::string(name));
      if (texts[name].empty()) {
        return fail(line);
      }
      ++line;
    }
    return true;
  }

  bool areAllInstalled(xmlNodePtr ad) {
    std::set<std::string> names;
    for (xmlNodePtr node : nodes(ad, "./promo_app_name")) {
      names.insert(text(node));
    }
    names.erase("");
    if (names.empty()) {
      return false;
    }
    if (machine_.folder != Machine::Folder::there) {
      log("+[MyPushAdUtil fetchUserInstalledAppNamesSet]",
          machine_.folder == Machine::Folder::missing ? 244 : 257);
      return false;
    }
    for (const auto& name : names) {
      if (!machine_.installed.contains(name)) {
        return false;
      }
    }
    return true;
  }

  void customise(MyPushAdInfo& record) {
    const std::string place = "-[MyPushAdInfo doParseCustomizationAndMerge]";
    if (!machine_.host || machine_.host->empty()) {
      return log(place, 147);
    }
    const auto root = readJsonAgain(*record.advance());
    const auto* hosts = root ? root->as<Dictionary>() : nullptr;
    if (hosts == nullptr) {
      return log(place, 153);
    }
    const auto host = hosts->find(*machine_.host);
    if (host == hosts->end() || host->second.as<Dictionary>() == nullptr) {
      return;
    }
    const Dictionary& entry = *host->second.as<Dictionary>();
    record.setAdvanceDict(entry);
    merge(record, entry);
  }

  static std::optional<std::int64_t> integer(const Dictionary& entry, const std::string& name) {
    const auto member = entry.find(name);
    if (member == entry.end()) {
      return std::nullopt;
    }
    if (const auto* flag = member->second.as<bool>()) {
      return *flag ? 1 : 0;
    }
    if (const auto* whole = member->second.as<std::int64_t>()) {
      return *whole;
    }
    const auto* fraction = member->second.as<double>();
    if (fraction == nullptr) {
      return std::nullopt;
    }
    constexpr double kBound = 9223372036854775808.0;  // 2 to the power of 63
    if (*fraction >= kBound) {
      return INT64_MAX;
    }
    return *fraction <= -kBound ? INT64_MIN : static_cast<std::int64_t>(*fraction);
  }

  static void merge(MyPushAdInfo& record, const Dictionary& entry) {
    using Setter = void (MyPushAdInfo::*)(std::int64_t);
    const std::map<std::string, Setter> numbers = {
        {"embed", &MyPushAdInfo::setEmbed},     {"width", &MyPushAdInfo::setWidth},
        {"height", &MyPushAdInfo::setHeight},   {"offsetx", &MyPushAdInfo::setOffsetx},
        {"offsety", &MyPushAdInfo::setOffsety}, {"count", &MyPushAdInfo::setCount},
        {"delay", &MyPushAdInfo::setDelay}};
    for (const auto& [name, setter] : numbers) {
      if (const auto value = integer(entry, name)) {
        (record.*setter)(*value);
      }
    }
    if (const auto value = integer(entry, "enable")) {
      record.setEnable(*value != 0);
    }
    const auto nonEmptyText = [&](const char* name) -> const std::string* {
      const auto member = entry.find(name);
      const auto* value = member == entry.end() ? nullptr : member->second.as<std::string>();
      return value == nullptr || value->empty() ? nullptr : value;
    };
    if (const auto* version = nonEmptyText("version")) {
      record.setVersion(*version);
    }
    if (const auto* notes = nonEmptyText("notes")) {
      record.setNotes(*notes);
    }
  }

  bool readInto(MyPushAdInfo& record, const std::string& document) {
    tree_ = treeOf(document);
    if (tree_ == nullptr) {
      return fail(91);
    }
    context_.reset(xmlXPathNewContext(tree_.get()));
    const auto root = reinterpret_cast<xmlNodePtr>(tree_.get());
    if (firstText(root, "./rootcfg/data/file_version").empty()) {
      return fail(94);
    }
    const auto identifier = identifierInTable(root);
    xmlNodePtr ad = identifier ? advertisement(root, *identifier) : nullptr;
    return ad != nullptr && readAdvertisement(record, ad);
  }

  bool readAdvertisement(MyPushAdInfo& record, xmlNodePtr ad) {
    std::map<std::string, std::string> texts;
    if (!readTexts(ad, texts)) {
      return false;
    }
    const auto titles = nodes(ad, "./title");
    const auto pages = nodes(ad, "./html_contents");
    if (titles.empty() || pages.empty()) {
      return fail(titles.empty() ? 138 : 139);
    }
    record.setTitleDict(languages(titles.front()));
    record.setHtmlContentsDict(languages(pages.front()));
    const bool isNeedless = areAllInstalled(ad);
    if (record.titleDict()->empty() || record.htmlContentsDict()->empty()) {
      return fail(record.titleDict()->empty() ? 176 : 177);
    }
    const auto leading = [&](const char* name) {
      return std::int64_t{std::strtoll(texts[name].c_str(), nullptr, 10)};
    };
    record.setAdId(leading("adid"));
    record.setEnable(texts["enable"] != "0");
    record.setVersion(texts["version"]);
    record.setEmbed(leading("embed"));
    record.setWidth(leading("width"));
    record.setHeight(leading("height"));
    record.setCount(leading("count"));
    record.setDelay(leading("delay"));
    record.setAdvance(texts["advance"]);
    record.setNotes(texts["notes"]);
    customise(record);
    if (isNeedless) {
      reading_.lines.emplace_back("ZAM: All po-apps installed, Disable it.");
      record.setEnable(false);
    }
    return true;
  }

  const Machine& machine_;
  Tree tree_;
  TreeContext context_;
  Reading reading_;
};

std::string doctypeOf(const std::string& document) {
  const std::size_t begin = std::min(document.find("<!DOCTYPE"), document.size());
  return document.substr(begin, document.find("]>", begin) - begin);
}

std::set<std::string> allMatches(const std::string& text, const std::regex& pattern) {
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    found.insert(match->str(1));
  }
  return found;
}

/// If a document has a parameter entity or an external subset, what it does not declare may be
/// declared there and is skipped. libxml2 forgets that inside of an entity and refuses the
/// document.
bool hasUndeclaredEntityInEntity(const std::string& document) {
  static const std::regex kDeclared("<!ENTITY\\s+([^\\s%]+)\\s");
  static const std::regex kValue("<!ENTITY\\s+[^\\s%]+\\s+('[^']*'|\"[^\"]*\")");
  static const std::regex kReference("&([^#;&][^;&]*);");
  const std::string doctype = doctypeOf(document);
  static const std::regex kElsewhere("%[^\\s;]+;|<!DOCTYPE\\s+\\S+\\s+(SYSTEM|PUBLIC)\\s");
  if (!std::regex_search(doctype, kElsewhere)) {
    return false;
  }
  std::set<std::string> known = allMatches(doctype, kDeclared);
  known.insert({"lt", "gt", "amp", "apos", "quot"});
  for (const auto& value : allMatches(doctype, kValue)) {
    for (const auto& name : allMatches(value, kReference)) {
      if (!known.contains(name)) {
        return true;
      }
    }
  }
  return false;
}

/// What a parameter entity declares does not count in a document that stands alone. libxml2 lets it
/// count.
bool standsAloneWithParameterEntities(const std::string& document) {
  static const std::regex kAlone("standalone\\s*=\\s*['\"]yes");
  static const std::regex kInParameter("<!ENTITY\\s+%[^>]*<!ENTITY");
  return std::regex_search(document.substr(0, 200), kAlone) &&
         std::regex_search(document, kInParameter);
}

/// The library refuses a reference to an undeclared parameter entity, whatever stands around it.
/// libxml2 does so only if nothing else could declare it.
bool hasUndeclaredParameterEntity(const std::string& document) {
  static const std::regex kDeclared("<!ENTITY\\s+%\\s+(\\S+)\\s");
  static const std::regex kReference("%([^\\s;%'\"]+);");
  const std::string doctype = doctypeOf(document);
  const auto known = allMatches(doctype, kDeclared);
  for (const auto& name : allMatches(doctype, kReference)) {
    if (!known.contains(name)) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool isBeyondSecondReader(const std::string& document) {
  return hasUndeclaredParameterEntity(document) || hasUndeclaredEntityInEntity(document) ||
         standsAloneWithParameterEntities(document);
}

Reading readAgain(const std::string& document, const Machine& machine) {
  return SecondReader(machine).read(document);
}

}  // namespace qorix
