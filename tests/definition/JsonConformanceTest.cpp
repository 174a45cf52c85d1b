#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "definition/Json.h"
#include "support/Repeated.h"

// RFC 8259, section by section. Where the library means to differ, the table says so:
// - a text is an object or an array (RFC 4627, section 2), nothing else;
// - section 9 allows limits: 512 levels;
// - section 8.1 allows to ignore a byte order mark: it is ignored;
// - section 8.2 leaves open what half of a surrogate pair means: it is refused, as it is no
// Unicode.

namespace qorix {
namespace {

using namespace std::string_literals;

struct JsonCase {
  const char* section;
  std::string text;
  bool isRead;
};

const std::vector<JsonCase> kStructure = {
    {"2 ws", "[\x20\x09\x0A\x0D]", true},
    {"2 ws", "\x0D\x0A[1]\x0D\x0A", true},
    {"2 ws", "[\x0B]", false},
    {"2 ws", "[\x0C]", false},
    {"2 ws", "[\xC2\xA0]", false},
    {"2 ws", "[\xE2\x80\xA8]", false},
    {"2 ws", "[\xE2\x81\xA0]", false},
    {"2 ws", "[\xEF\xBB\xBF]", false},
    {"2 ws", "[1]\x0C", false},
    {"2 JSON-text", "1", false},
    {"2 JSON-text", "\"a\"", false},
    {"2 JSON-text", "true", false},
    {"2 JSON-text", "null", false},
    {"2 JSON-text", "", false},
    {"2 JSON-text", "[][]", false},
    {"2 JSON-text", "{}[]", false},
    {"2 JSON-text", "{},", false},
    {"2 JSON-text", "[1]x", false},
    {"2 JSON-text", "[1]\"", false},
    {"2 JSON-text", "[1]//", false},
    {"2 structural", "[", false},
    {"2 structural", "]", false},
    {"2 structural", "{", false},
    {"2 structural", "}", false},
    {"2 structural", "[}", false},
    {"2 structural", "{]", false},
    {"2 structural", "(1)", false},
    {"2 structural", "<null>", false},
    {"2 structural", "*", false},
    {"2 structural", "[*]", false},
    {"2 structural", "[1;2]", false},
    {"2 structural", "{\"a\"=1}", false},
    {"2 structural", "{\"a\":1;\"b\":2}", false},
    {"3 literals", "[true,false,null]", true},
    {"3 literals", "[True]", false},
    {"3 literals", "[TRUE]", false},
    {"3 literals", "[NULL]", false},
    {"3 literals", "[fals]", false},
    {"3 literals", "[tru]", false},
    {"3 literals", "[nul]", false},
    {"3 literals", "[truee]", false},
    {"3 literals", "[truefalse]", false},
    {"3 literals", "[true false]", false},
    {"3 literals", "[undefined]", false},
    {"3 literals", "[a]", false},
    {"3 literals", "[t\\u0072ue]", false},
    {"4 object", "{}", true},
    {"4 object", "{ }", true},
    {"4 object", R"({"a":1})", true},
    {"4 object", R"({"a":1,"b":2})", true},
    {"4 object", R"({ "a" : 1 , "b" : { } })", true},
    {"4 object", R"({"":""})", true},
    {"4 object", R"({"a":1,"a":2})", true},
    {"4 object", R"({"a\u0000b":1})", true},
    {"4 object", R"({"a":1,})", false},
    {"4 object", R"({,"a":1})", false},
    {"4 object", R"({,})", false},
    {"4 object", R"({"a":1,,"b":2})", false},
    {"4 object", R"({"a"})", false},
    {"4 object", R"({"a",1})", false},
    {"4 object", R"({"a":})", false},
    {"4 object", R"({"a"::1})", false},
    {"4 object", R"({:1})", false},
    {"4 object", R"({"a" 1})", false},
    {"4 object", R"({"a":1 "b":2})", false},
    {"4 object", R"({"a":1 2})", false},
    {"4 object", R"({a:1})", false},
    {"4 object", R"({'a':1})", false},
    {"4 object", R"({1:1})", false},
    {"4 object", R"({null:1})", false},
    {"4 object", R"({[]:1})", false},
    {"4 object", R"({"a":1)", false},
    {"4 object", R"({"a":"b)", false},
    {"4 object", R"({"a":1]})", false},
    {"4 object", R"({"a":1}})", false},
    {"4 object", R"({"a":/**/1})", false},
    {"5 array", "[]", true},
    {"5 array", "[ ]", true},
    {"5 array", "[1]", true},
    {"5 array", "[1,2 , 3]", true},
    {"5 array", "[[],[[]],{}]", true},
    {"5 array", "[null,1,\"1\",{}]", true},
    {"5 array", "[1,]", false},
    {"5 array", "[,1]", false},
    {"5 array", "[,]", false},
    {"5 array", "[1,,2]", false},
    {"5 array", "[1 2]", false},
    {"5 array", "[1:2]", false},
    {"5 array", "[\"a\":1]", false},
    {"5 array", "[1", false},
    {"5 array", "[1,", false},
    {"5 array", "[[1]", false},
    {"5 array", "[1]]", false},
    {"5 array", "[1,\n2\n", false},
    {"9 depth", repeated("[", 512) + repeated("]", 512), true},
    {"9 depth", repeated("[", 513) + repeated("]", 513), false},
};

// What stands alone in an array.
const std::vector<JsonCase> kNumberCases = {
    {"6 int", "0", true},
    {"6 int", "-0", true},
    {"6 int", "7", true},
    {"6 int", "10", true},
    {"6 int", "-10", true},
    {"6 int", "123456789012345678901234567890", true},
    {"6 int", "00", false},
    {"6 int", "01", false},
    {"6 int", "-00", false},
    {"6 int", "-01", false},
    {"6 int", "1 0", false},
    {"6 int", "\xEF\xBC\x91", false},
    {"6 int", "\xD9\xA1", false},
    {"6 int", "0x1", false},
    {"6 int", "1f", false},
    {"6 int", "1L", false},
    {"6 int", "1,000,", false},
    {"6 minus", "-", false},
    {"6 minus", "--1", false},
    {"6 minus", "- 1", false},
    {"6 minus", "-a", false},
    {"6 minus", "+1", false},
    {"6 minus", "+", false},
    {"6 minus", "1-", false},
    {"6 minus", "1-2", false},
    {"6 minus", "1+2", false},
    {"6 frac", "0.0", true},
    {"6 frac", "1.5", true},
    {"6 frac", "-1.50", true},
    {"6 frac", "0.000000000000000000000000000001", true},
    {"6 frac", ".5", false},
    {"6 frac", "-.5", false},
    {"6 frac", "1.", false},
    {"6 frac", "-1.", false},
    {"6 frac", ".", false},
    {"6 frac", "1..5", false},
    {"6 frac", "1.5.5", false},
    {"6 frac", "1. 5", false},
    {"6 frac", "1,5.", false},
    {"6 exp", "1e5", true},
    {"6 exp", "1E5", true},
    {"6 exp", "1e+5", true},
    {"6 exp", "1e-5", true},
    {"6 exp", "1e05", true},
    {"6 exp", "0e0", true},
    {"6 exp", "1.5E-05", true},
    {"6 exp", "1e999", true},
    {"6 exp", "-1e999", true},
    {"6 exp", "1e-999", true},
    {"6 exp", "1e", false},
    {"6 exp", "1e+", false},
    {"6 exp", "1E-", false},
    {"6 exp", "1.e5", false},
    {"6 exp", "e5", false},
    {"6 exp", "1e5.5", false},
    {"6 exp", "1ee5", false},
    {"6 exp", "1e++5", false},
    {"6 exp", "1e 5", false},
    {"6 exp", "1eE5", false},
    {"6 exp", "01e999", false},
    {"6 exp", "1.e999", false},
    {"6 others", "NaN", false},
    {"6 others", "Infinity", false},
    {"6 others", "-Infinity", false},
    {"6 others", "inf", false},
};

// What stands between the quotation marks of a string.
const std::vector<JsonCase> kStringCases = {
    {"7 unescaped", "", true},
    {"7 unescaped", " ", true},
    {"7 unescaped", "!", true},
    {"7 unescaped", "#[]{}:,'/", true},
    {"7 unescaped", "\x7F", true},
    {"7 unescaped", "\xC2\x80", true},
    {"7 unescaped", "\xC2\x85\xE2\x80\xA8\xE2\x80\xA9", true},
    {"7 unescaped", "\xEF\xBB\xBF", true},
    {"7 unescaped", "\xEF\xBF\xBE\xEF\xBF\xBF", true},
    {"7 unescaped", "\xF4\x8F\xBF\xBF", true},
    {"7 unescaped", "\n", false},
    {"7 unescaped", "\t", false},
    {"7 unescaped", "\r", false},
    {"7 unescaped", "\x01", false},
    {"7 unescaped", "\x1F", false},
    {"7 unescaped", "\0"s, false},
    {"7 unescaped", "\"", false},
    {"7 escape", R"(\"\\\/\b\f\n\r\t)", true},
    {"7 escape", R"(\\u0041)", true},
    {"7 escape", R"(\\\")", true},
    {"7 escape", R"(\)", false},
    {"7 escape", R"(\\\)", false},
    {"7 escape", R"(\a)", false},
    {"7 escape", R"(\v)", false},
    {"7 escape", R"(\')", false},
    {"7 escape", R"(\0)", false},
    {"7 escape", R"(\x41)", false},
    {"7 escape", R"(\N)", false},
    {"7 escape", R"(\ )", false},
    {"7 escape", "\\\n", false},
    {"7 escape", "\\\xC3\xA9", false},
    {"7 escape u", R"(\u0041)", true},
    {"7 escape u", R"(\uabCD)", true},
    {"7 escape u", R"(\u0000)", true},
    {"7 escape u", R"(\u0022)", true},
    {"7 escape u", R"(\uFFFE\uFFFF\uFDD0)", true},
    {"7 escape u", R"(\u00411)", true},
    {"7 escape u", R"(\uD834\uDD1E)", true},
    {"7 escape u", R"(\ud834\udd1e)", true},
    {"7 escape u", R"(\uDBFF\uDFFF)", true},
    {"7 escape u", R"(\uD800\uDC00)", true},
    {"7 escape u", R"(\U0041)", false},
    {"7 escape u", R"(\u)", false},
    {"7 escape u", R"(\u004)", false},
    {"7 escape u", R"(\u004G)", false},
    {"7 escape u", R"(\u 041)", false},
    {"7 escape u", R"(\u+041)", false},
    {"7 escape u", R"(\u-041)", false},
    {"7 escape u", R"(\u{41})", false},
    {"8.2 halves", R"(\uD834)", false},
    {"8.2 halves", R"(\uDD1E)", false},
    {"8.2 halves", R"(\uD834x)", false},
    {"8.2 halves", R"(\uD834\n)", false},
    {"8.2 halves", R"(\uD834\u0041)", false},
    {"8.2 halves", R"(\uD834\uD834)", false},
    {"8.2 halves", R"(\uDD1E\uD834)", false},
    {"8.2 halves", R"(\uD834\uDD1)", false},
    {"8.1 UTF-8", "\x80", false},
    {"8.1 UTF-8", "\xBF", false},
    {"8.1 UTF-8", "\xC0\x80", false},
    {"8.1 UTF-8", "\xC1\xBF", false},
    {"8.1 UTF-8", "\xC3", false},
    {"8.1 UTF-8", "\xC3\xC3", false},
    {"8.1 UTF-8", "\xE0\x9F\xBF", false},
    {"8.1 UTF-8", "\xE2\x82", false},
    {"8.1 UTF-8", "\xED\xA0\x80", false},
    {"8.1 UTF-8", "\xED\xBF\xBF", false},
    {"8.1 UTF-8", "\xF0\x8F\xBF\xBF", false},
    {"8.1 UTF-8", "\xF0\x9D\x84", false},
    {"8.1 UTF-8", "\xF4\x90\x80\x80", false},
    {"8.1 UTF-8", "\xF5\x80\x80\x80", false},
    {"8.1 UTF-8", "\xF8\x88\x80\x80\x80", false},
    {"8.1 UTF-8", "\xFE", false},
    {"8.1 UTF-8", "\xFF", false},
    {"8.1 UTF-8", "\xE9", false},
};

const std::vector<JsonCase> kEncodings = {
    {"8.1 byte order mark", "\xEF\xBB\xBF[]", true},
    {"8.1 byte order mark", "\xEF\xBB\xBF\xEF\xBB\xBF[]", false},
    {"8.1 byte order mark", "\xEF\xBB[]", false},
    {"8.1 byte order mark", " \xEF\xBB\xBF[]", false},
    {"8.1 UTF-16", "\xFF\xFE[\0]\0"s, false},
    {"8.1 UTF-16", "\xFE\xFF\0[\0]"s, false},
    {"8.1 UTF-16", "[\0]\0"s, false},
    {"8.1 UTF-16", "\0[\0]"s, false},
};

void expectJson(const char* section, const std::string& text, bool isRead) {
  EXPECT_EQ(parseJson(text).has_value(), isRead) << "section " << section << ": " << text;
}

void expectReadings(const std::vector<JsonCase>& cases, std::string_view before,
                    std::string_view behind) {
  for (const auto& [section, text, isRead] : cases) {
    expectJson(section, std::string(before).append(text).append(behind), isRead);
  }
}

TEST(JsonConformanceTest, structureIsThatOfTheStandard) { expectReadings(kStructure, "", ""); }

TEST(JsonConformanceTest, numbersAreThoseOfTheStandard) {
  expectReadings(kNumberCases, "[", "]");
  expectReadings(kNumberCases, "{\"a\": ", " }");
  expectReadings(kNumberCases, "[1e999,", ",\"1\"]");
}

TEST(JsonConformanceTest, stringsAreThoseOfTheStandard) {
  expectReadings(kStringCases, "[\"", "\"]");
  expectReadings(kStringCases, "{\"", "\":1}");
  expectReadings(kStringCases, "[1e999,\"", "\"]");
}

TEST(JsonConformanceTest, theEncodingIsUtf8) { expectReadings(kEncodings, "", ""); }

}  // namespace
}  // namespace qorix
