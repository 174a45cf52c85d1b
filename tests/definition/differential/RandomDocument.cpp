#include "definition/differential/RandomDocument.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "definition/differential/Random.h"
#include "definition/differential/RandomJson.h"
#include "definition/differential/RandomWriting.h"
#include "support/Repeated.h"

namespace qorix {

namespace {

constexpr const char* kHost = "com.example.editor";
constexpr std::array kHosts = {
    kHost, "com.example.viewer",  "com.example.other", "Com.Example.Editor",
    "x",   " com.example.editor", "caf\xC3\xA9",       "com.example.editor\n"};
constexpr std::array kIdentifiers = {"1", "11", "12 ", "x", "0", "-3", "99999999999999999999"};
constexpr std::array kNumbers = {"0",
                                 "1",
                                 "8",
                                 "600",
                                 " 12px",
                                 "3.9",
                                 "abc",
                                 "-2",
                                 "+5",
                                 "007",
                                 "\n9",
                                 "- 1",
                                 "++1",
                                 "-",
                                 "1e3",
                                 " ",
                                 "9223372036854775807",
                                 "9223372036854775808",
                                 "-9223372036854775809",
                                 "\t+4",
                                 "+-1",
                                 "\xD9\xA1",
                                 "0x10",
                                 "4\xC2\xA0"};
constexpr std::array kTexts = {"1",
                               "1a4",
                               "2a1",
                               "autumn offer",
                               " ",
                               "a < b && c > d",
                               "]] >",
                               "\xE6\x97\xA5\xE6\x9C\xAC",
                               "\"q\"",
                               "line\nline",
                               "\xF0\x9D\x84\x9E",
                               "'",
                               "]]",
                               "&amp;"};
constexpr std::array kSwitches = {"0", "1", "0", "no", "00", "-0", " 0", "yes", "0\n"};
constexpr std::array kLanguages = {"en", "de", "default", "zh-Hans",
                                   "zh", "en", "x:en",    "caf\xC3\xA9",
                                   "_",  ":",  "pt.BR",   "\xE6\x97\xA5"};
constexpr std::array kNames = {"rootcfg",       "data",           "file_version", "push_ad_config",
                               "appid",         "adid",           "push_ad",      "title",
                               "html_contents", "promo_app_name", "Push_ad",      "p:push_ad",
                               "datas",         "enable",         "notes",        "x"};
constexpr std::array kApplications = {"Viewer",  "Converter", "Tool.Pro",
                                      " Viewer", "viewer",    "Caf\xC3\xA9"};

Node leaf(const std::string& name, const std::string& text) { return {name, text, {}}; }

class Maker {
 public:
  explicit Maker(Random& random) : random_(random) {}

  Machine machine() {
    Machine machine;
    if (random_.happens(95)) {
      machine.host = random_.happens(85) ? kHost : random_.happens(90) ? random_.pick(kHosts) : "";
    }
    host_ = machine.host.value_or("");
    machine.folder = random_.happens(90)   ? Machine::Folder::there
                     : random_.happens(50) ? Machine::Folder::unreadable
                                           : Machine::Folder::missing;
    for (const char* name : kApplications) {
      if (random_.happens(60)) {
        machine.installed.insert(name);
      }
    }
    return machine;
  }

  Node document() {
    Node root{"rootcfg", "", {}};
    root.children.push_back(data(true));
    const std::size_t ads = random_.happens(1) ? 300 : random_.between(1, 4);
    for (std::size_t index = 0; index < ads; ++index) {
      root.children.push_back(advertisement());
      if (random_.happens(10)) {
        root.children.push_back(data(random_.happens(50)));
      }
    }
    if (random_.happens(30)) {
      change(root);
    }
    return root;
  }

 private:
  Node data(bool hasVersion) {
    Node data{"data", "", {}};
    if (hasVersion) {
      data.children.push_back(leaf("file_version", random_.pick(kTexts)));
    }
    const std::size_t lines = random_.happens(1) ? 1000 : random_.below(4);
    for (std::size_t index = 0; index < lines; ++index) {
      data.children.push_back({"push_ad_config",
                               "",
                               {leaf("appid", random_.happens(30) ? host_ : random_.pick(kHosts)),
                                leaf("adid", identifier())}});
    }
    return data;
  }

  std::string identifier() { return random_.happens(80) ? "12" : random_.pick(kIdentifiers); }

  Node texts(const std::string& name) {
    Node node{name, random_.happens(10) ? "text between" : "", {}};
    const std::size_t languages = random_.between(1, 4);
    for (std::size_t index = 0; index < languages; ++index) {
      Node language =
          leaf(random_.pick(kLanguages), random_.happens(95) ? random_.pick(kTexts) : "");
      if (random_.happens(10)) {
        language.children = {leaf("b", random_.pick(kTexts)), leaf("", " tail")};
      }
      node.children.push_back(language);
    }
    return node;
  }

  Node advertisement() {
    Node ad{"push_ad", "", {}};
    ad.children.push_back(leaf("adid", identifier()));
    ad.children.push_back(leaf("enable", random_.pick(kSwitches)));
    ad.children.push_back(leaf("version", random_.pick(kTexts)));
    for (const char* name : {"embed", "width", "height", "count", "delay"}) {
      ad.children.push_back(leaf(name, random_.pick(kNumbers)));
    }
    ad.children.push_back(leaf("advance", randomCustomisation(random_, host_)));
    ad.children.push_back(leaf("notes", random_.pick(kTexts)));
    ad.children.push_back(texts("title"));
    ad.children.push_back(texts("html_contents"));
    while (random_.happens(40)) {
      ad.children.push_back(
          leaf("promo_app_name", random_.happens(90) ? random_.pick(kApplications) : ""));
    }
    if (random_.happens(30)) {  // the order within an advertisement does not matter
      std::swap(ad.children[random_.below(ad.children.size())], ad.children.front());
    }
    return ad;
  }

  /// Makes a few elements differ from what the format expects.
  void change(Node& root) {
    const std::size_t changes = random_.between(1, 3);
    for (std::size_t index = 0; index < changes; ++index) {
      changeOne(root);
    }
  }

  /// One of the elements with children, each level as likely as the others.
  Node& parentIn(Node& root) {
    Node* node = &root;
    while (!node->children.empty() && random_.happens(75)) {
      Node& child = node->children[random_.below(node->children.size())];
      if (child.children.empty()) {
        break;
      }
      node = &child;
    }
    return *node;
  }

  void changeOne(Node& root) {
    Node& parent = parentIn(root);
    if (parent.children.empty()) {
      return;
    }
    const std::size_t place = random_.below(parent.children.size());
    Node& child = parent.children[place];
    const auto at = parent.children.begin() + static_cast<std::ptrdiff_t>(place);
    switch (random_.below(10)) {
      case 0:
      case 1:
        parent.children.erase(at);
        break;
      case 2:
      case 3:
        child.text.clear();
        child.children.clear();
        break;
      case 4:
        child.name = random_.pick(kNames);
        break;
      case 5:
        parent.children.insert(at, Node(child));
        break;
      case 6:
        child = {random_.pick(kNames), "", {Node(child)}};
        break;
      case 7:
        parent.children.insert(at, leaf(random_.pick(kNames), random_.pick(kTexts)));
        break;
      case 8:
        nest(child);
        break;
      default:
        root.name = random_.happens(20) ? "Rootcfg" : root.name;
        std::swap(child, parent.children[random_.below(parent.children.size())]);
    }
  }

  void nest(Node& node) {
    const std::size_t levels = random_.between(1, random_.happens(5) ? 2000 : 20);
    Node inner = leaf("x", "deep");
    for (std::size_t level = 0; level < levels; ++level) {
      Node outer{"x", "", {}};
      outer.children.push_back(std::move(inner));
      inner = std::move(outer);
    }
    node.children.push_back(std::move(inner));
  }

  Random& random_;
  std::string host_;
};

}  // namespace

RandomDocument randomDocument(std::uint64_t seed) {
  Random random(seed);
  Maker maker(random);
  RandomDocument document;
  document.machine = maker.machine();
  document.text = writtenAtRandom(random, maker.document());
  if (random.happens(15)) {
    damage(random, document.text);
  }
  return document;
}

}  // namespace qorix
