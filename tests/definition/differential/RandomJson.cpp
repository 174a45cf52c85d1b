#include "definition/differential/RandomJson.h"

#include <array>

#include "support/Repeated.h"

namespace qorix {

namespace {

constexpr std::array kMembers = {"enable",  "version", "embed", "width", "height",
                                 "offsetx", "offsety", "count", "delay", "notes",
                                 "extra",   "",        "Width", "enable"};
constexpr std::array kJsonNumbers = {"0",
                                     "1",
                                     "-0",
                                     "-1",
                                     "12",
                                     "-0.5",
                                     "2.7",
                                     "1e2",
                                     "1E+400",
                                     "-1.5e400",
                                     "1e-400",
                                     "9223372036854775807",
                                     "-9223372036854775808",
                                     "9223372036854775808",
                                     "18446744073709551615",
                                     "99999999999999999999999",
                                     "-9223372036854775809",
                                     "9007199254740993",
                                     "0.0e-0",
                                     "9.2233720368547758e18"};
constexpr std::array kWrongJsonNumbers = {"01",  "+1",  "1.", ".5",     "1e",
                                          "0x1", "NaN", "-",  "1e400x", "- 1"};
constexpr std::array kJsonTexts = {R"("")",
                                   R"("2b2")",
                                   R"("a\tb")",
                                   R"("\u00e9")",
                                   R"("\uD834\uDD1E")",
                                   R"("\"\\\/")",
                                   "\"\xC3\xA9\xF0\x9D\x84\x9E\"",
                                   R"("]]>")",
                                   R"("1e400")"};
constexpr std::array kWrongJsonTexts = {R"("\x")",   R"("\uD834")", R"("\uDD1E")",
                                        R"("\u12")", "\"a\nb\"",    "\"a\tb\"",
                                        "'a'",       R"("a)",       R"("\uD834\u0041")"};
constexpr std::array kWrongWholes = {
    "[]",   "{",   "none", "3",         "\"x\"",        " ",      "{}{}", "{\"a\":1,}", "{} // no",
    "[{}]", "{,}", "null", "{\"a\" 1}", "\xEF\xBB\xBF", "{'a':1}"};
constexpr std::array kBlanks = {"", "", " ", "\n", "\t "};

class JsonWriter {
 public:
  JsonWriter(Random& random, std::size_t faultPercent)
      : random_(random), faultPercent_(faultPercent) {}

  std::string customisation(const std::string& host) {
    std::string text = blank() + "{";
    const std::size_t entries = random_.below(4);
    for (std::size_t index = 0; index < entries; ++index) {
      const std::string name = random_.happens(60)   ? host
                               : random_.happens(50) ? "com.example.viewer"
                                                     : "x";
      text += (index == 0 ? "" : ",") + blank() + "\"" + name + "\"" + blank() + ":" + blank() +
              (random_.happens(90) ? object(2) : value(2)) + blank();
    }
    return text + "}" + blank();
  }

 private:
  std::string blank() { return random_.pick(kBlanks); }
  bool isFault() { return random_.below(1000) < faultPercent_ * 10 / 4; }

  std::string value(std::size_t depth) {
    switch (random_.below(depth == 0 ? 6 : 8)) {
      case 0:
      case 1:
      case 2:
        return isFault() ? random_.pick(kWrongJsonNumbers) : random_.pick(kJsonNumbers);
      case 3:
      case 4:
        return isFault() ? random_.pick(kWrongJsonTexts) : random_.pick(kJsonTexts);
      case 5:
        return random_.pick(std::array{"true", "false", "null"});
      case 6:
        return object(depth - 1);
      default:
        return array(depth - 1);
    }
  }

  std::string object(std::size_t depth) {
    std::string text = "{" + blank();
    const std::size_t members = random_.below(7);
    for (std::size_t index = 0; index < members; ++index) {
      text += (index == 0 ? "\"" : ",\"") + std::string(random_.pick(kMembers)) + "\"" + blank() +
              (isFault() ? "" : ":") + blank() + value(depth);
    }
    return text + (isFault() ? ",}" : "}");
  }

  std::string array(std::size_t depth) {
    std::string text = "[";
    const std::size_t elements = random_.below(4);
    for (std::size_t index = 0; index < elements; ++index) {
      text += (index == 0 ? "" : ",") + blank() + value(depth);
    }
    return text + (isFault() ? "" : "]");
  }

  Random& random_;
  const std::size_t faultPercent_;
};

/// Near the depth that is still read.
std::string deepCustomisation(Random& random, const std::string& host) {
  const std::size_t depth = random.between(509, 513);
  return "{\"" + host + "\":{\"embed\":7,\"x\":" + repeated("[", depth) + repeated("]", depth) +
         "}}";
}

}  // namespace

std::string randomCustomisation(Random& random, const std::string& host) {
  switch (random.below(40)) {
    case 0:
    case 1:
      return random.pick(kWrongWholes);
    case 2:
      return deepCustomisation(random, host);
    case 3:
      return "\xEF\xBB\xBF" + JsonWriter(random, 0).customisation(host);
    case 4:
    case 5:
    case 6:
      return JsonWriter(random, 20).customisation(host);
    default:
      return JsonWriter(random, 0).customisation(host);
  }
}

}  // namespace qorix
