#include "definition/differential/SecondJson.h"

#include <utf8.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace qorix {

namespace {

struct NotJson {};

/// Reads by recursive descent: a function for each rule of the grammar. Throws `NotJson`.
class GrammarReader {
 public:
  explicit GrammarReader(std::string_view text) : rest_(text) {}

  Value readText() {
    require(utf8::is_valid(rest_.begin(), rest_.end()));
    takeIf("\xEF\xBB\xBF");  // a byte order mark may be ignored
    skipBlanks();
    require(rest_.starts_with('{') || rest_.starts_with('['));
    Value value = readValue();
    skipBlanks();
    require(rest_.empty());
    return value;
  }

 private:
  static void require(bool condition) {
    if (!condition) {
      throw NotJson();
    }
  }

  bool takeIf(std::string_view token) {
    const bool isNext = rest_.starts_with(token);
    rest_.remove_prefix(isNext ? token.size() : 0);
    return isNext;
  }

  char take() {
    require(!rest_.empty());
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  void skipBlanks() {
    while (takeIf(" ") || takeIf("\t") || takeIf("\n") || takeIf("\r")) {
    }
  }

  Value readValue() {
    if (takeIf("null")) {
      return {};
    }
    if (takeIf("true")) {
      return true;
    }
    if (takeIf("false")) {
      return false;
    }
    if (takeIf("\"")) {
      return readString();
    }
    if (!rest_.starts_with('{') && !rest_.starts_with('[')) {
      return readNumber();
    }
    constexpr int kDeepest = 512;
    require(++depth_ <= kDeepest);
    Value value = take() == '{' ? Value(readMembers()) : Value(readElements());
    --depth_;
    return value;
  }

  Dictionary readMembers() {
    Dictionary members;
    skipBlanks();
    if (takeIf("}")) {
      return members;
    }
    do {
      skipBlanks();
      require(takeIf("\""));
      const std::string name = readString();
      skipBlanks();
      require(takeIf(":"));
      skipBlanks();
      members[name] = readValue();
      skipBlanks();
    } while (takeIf(","));
    require(takeIf("}"));
    return members;
  }

  Array readElements() {
    Array elements;
    skipBlanks();
    if (takeIf("]")) {
      return elements;
    }
    do {
      skipBlanks();
      elements.push_back(readValue());
      skipBlanks();
    } while (takeIf(","));
    require(takeIf("]"));
    return elements;
  }

  std::string readString() {
    std::string text;
    while (!takeIf("\"")) {
      const char c = take();
      require(static_cast<unsigned char>(c) >= 0x20);
      if (c == '\\') {
        readEscape(text);
      } else {
        text += c;
      }
    }
    return text;
  }

  void readEscape(std::string& text) {
    constexpr std::string_view kLetters = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    const char letter = take();
    if (letter != 'u') {
      const auto index = kLetters.find(letter);
      require(index != kLetters.npos);
      text += kMeanings[index];
      return;
    }
    unsigned long character = readHexadecimal();
    if (character >= 0xD800 && character < 0xDC00) {
      require(takeIf("\\u"));
      const unsigned long low = readHexadecimal();
      require(low >= 0xDC00 && low < 0xE000);
      character = 0x10000 + (character - 0xD800) * 0x400 + (low - 0xDC00);
    }
    require(character < 0xD800 || character > 0xDFFF);
    utf8::append(static_cast<std::uint32_t>(character), std::back_inserter(text));
  }

  unsigned long readHexadecimal() {
    const std::string digits(rest_.substr(0, 4));
    require(digits.size() == 4 &&
            digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos);
    rest_.remove_prefix(4);
    return std::strtoul(digits.c_str(), nullptr, 16);
  }

  std::string takeDigits() {
    const auto end = rest_.find_first_not_of("0123456789");
    std::string digits(rest_.substr(0, end));
    require(!digits.empty());
    rest_.remove_prefix(digits.size());
    return digits;
  }

  Value readNumber() {
    std::string number = takeIf("-") ? "-" : "";
    const std::string whole = takeDigits();
    require(whole == "0" || whole.front() != '0');
    number += whole;
    bool isInteger = true;
    if (takeIf(".")) {
      number += "." + takeDigits();
      isInteger = false;
    }
    if (takeIf("e") || takeIf("E")) {
      number += takeIf("-") ? "e-" : takeIf("+") ? "e+" : "e";
      number += takeDigits();
      isInteger = false;
    }
    return valueOf(number, isInteger);
  }

  /// An integer of 64 bits if it is one, else the nearest fraction; far beyond all fractions a very
  /// large one.
  static Value valueOf(const std::string& number, bool isInteger) {
    errno = 0;
    const long long integer = isInteger ? std::strtoll(number.c_str(), nullptr, 10) : 0;
    if (isInteger && errno == 0) {
      return std::int64_t{integer};
    }
    const double fraction = std::strtod(number.c_str(), nullptr);
    return std::isinf(fraction) ? std::copysign(1e308, fraction) : fraction;
  }

  std::string_view rest_;
  int depth_ = 0;
};

}  // namespace

std::optional<Value> readJsonAgain(const std::string& text) {
  try {
    return GrammarReader(text).readText();
  } catch (const NotJson&) {
    return std::nullopt;
  }
}

}  // namespace qorix
