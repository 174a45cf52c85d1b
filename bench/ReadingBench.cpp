// What reading an ad configuration document costs, in time and in memory, beside expat with empty
// handlers (the limit of a strict reader) and libxml2 building its tree, on the same bytes.

#include <expat.h>
#include <libxml/parser.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Platform.h>

#include "support/Documents.h"
#include "support/Measuring.h"
#include "support/ProcessMemory.h"

namespace qorix::bench {
namespace {

struct Shape {
  const char* name;
  int ads;
  int lines;
  std::size_t pageBytes;  // of each of the six languages
  int rounds;
};
constexpr Shape kShapes[] = {
    {"S", 2, 10, 3'800, 301},
    {"M", 50, 500, 6'400, 31},
    {"L", 500, 20'000, 12'300, 7},
};

std::string hostName(int index) { return "com.example.host" + std::to_string(index); }

std::string tableLine(int index, int ads) {
  return "    <push_ad_config>\n      <appid>" + hostName(index) + "</appid>\n      <adid>" +
         std::to_string(index % ads + 1) + "</adid>\n    </push_ad_config>\n";
}

std::string page(std::size_t bytes) {
  std::string html = "<!DOCTYPE html>\n<html><head><title>Offer</title></head>\n<body>\n";
  while (html.size() < bytes) {
    html +=
        "<div class=\"offer\">\n<a href=\"https://www.example.com/app?zamopenout=1&id=7\">Try our "
        "viewer &amp; converter</a>\n<p>Fast, small, friendly: it opens every picture that you "
        "have, and some that you'd forgotten.</p>\n</div>\n";
  }
  return html + "</body></html>\n";
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    result += c == '<'    ? std::string("&lt;")
              : c == '>'  ? std::string("&gt;")
              : c == '&'  ? std::string("&amp;")
              : c == '"'  ? std::string("&quot;")
              : c == '\'' ? std::string("&#39;")
                          : std::string(1, c);
  }
  return result;
}

std::string ad(int index, const std::string& html) {
  std::string titles;
  std::string pages;
  for (const char* language : {"en", "de", "fr", "ja", "pt-BR", "default"}) {
    titles += element(language, "Try our viewer");
    pages += element(language, html);
  }
  return "  <push_ad>\n    <adid>" + std::to_string(index + 1) +
         "</adid>\n    <enable>1</enable>\n    <version>2a1</version>\n    <embed>1</embed>\n"
         "    <width>728</width>\n    <height>90</height>\n    <count>10</count>\n"
         "    <delay>0</delay>\n    <advance>{\"com.example.editor\":{\"offsety\":12}}</advance>\n"
         "    <notes>autumn offer</notes>\n    <title>\n" +
         titles + "    </title>\n    <html_contents>\n" + pages +
         "    </html_contents>\n  </push_ad>\n";
}

std::string document(const Shape& shape, bool isEscaped, bool isTableLast = false) {
  std::string table = "  <data>\n    <file_version>1</file_version>\n";
  for (int line = 0; line < shape.lines; ++line) {
    table += tableLine(line, shape.ads);
  }
  table += "  </data>\n";
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rootcfg>\n";
  text += isTableLast ? "" : table;
  // Escaped, it is longer: the documents are about as long.
  const std::string html = isEscaped ? escaped(page(shape.pageBytes * 9 / 10))
                                     : "<![CDATA[" + page(shape.pageBytes) + "]]>";
  for (int index = 0; index < shape.ads; ++index) {
    text += ad(index, html);
  }
  text += isTableLast ? table : "";
  return text + "</rootcfg>\n";
}

void require(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(EXIT_FAILURE);
  }
}

void readWithExpat(const std::string& text) {
  XML_Parser parser = XML_ParserCreate("UTF-8");
  XML_SetElementHandler(
      parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
  XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
  require(XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK,
          "expat refused the document");
  XML_ParserFree(parser);
}

void readWithLibxml2(const std::string& text) {
  xmlDocPtr tree = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                                 XML_PARSE_HUGE | XML_PARSE_NONET);
  require(tree != nullptr, "libxml2 refused the document");
  xmlFreeDoc(tree);
}

void installHost(const std::string& identifier) {
  Platform platform;
  platform.mainBundle = std::make_shared<const Bundle>(identifier, Url::fileUrl("/host"));
  installPlatform(platform);
}

void readAsHost(const std::optional<std::string>& text, const std::string& host) {
  installHost(host);
  require(MyPushAdUtil::parseXMLWithString(text) != nullptr, "the document was refused");
}

struct Host {
  const char* name;
  int line;
  bool isTableLast = false;
};

/// Hosts whose line comes first, last and not at all, and one that has the table behind the
/// advertisements.
std::vector<Host> hostsOf(const Shape& shape) {
  return {{"first line", 0},
          {"last line", shape.lines - 1},
          {"no line", shape.lines},
          {"last line, table behind the ads", shape.lines - 1, true}};
}

void compareTimes(bool isEscaped) {
  printHeading(
      isEscaped ? "Reading a document, pages escaped" : "Reading a document, pages in CDATA", "ms");
  for (const Shape& shape : kShapes) {
    const std::optional<std::string> text = document(shape, isEscaped);
    const std::optional<std::string> otherOrder = document(shape, isEscaped, true);
    std::vector<Work> works = {[&] { readWithExpat(*text); }, [&] { readWithLibxml2(*text); }};
    for (const Host& host : hostsOf(shape)) {
      works.emplace_back([&read = host.isTableLast ? otherOrder : text, line = host.line] {
        readAsHost(read, hostName(line));
      });
    }
    const auto medians = inTurns(rounds(shape.rounds), works, processorMicrosecondsOf);
    std::size_t index = 2;
    for (const Host& host : hostsOf(shape)) {
      const std::string what = std::string(shape.name) + ", " + host.name;
      const double ours = medians.at(index++) / 1000;
      printRow({what, ours, "expat, empty handlers", medians[0] / 1000, isEscaped ? 1.1 : 0.7});
      printRow({what, ours, "libxml2, its tree", medians[1] / 1000, 0.25});
    }
  }
}

/// One run: the number of the shape, "escaped" or "CDATA", the reader ("expat", "libxml2" or
/// "QORIX"), and the line of its host.
void measureMemory(const Arguments& arguments) {
  const Shape& shape = kShapes[std::stoul(arguments[1])];
  const bool isEscaped = arguments[2] == "escaped";
  const std::string& reader = arguments[3];
  const int line = std::stoi(arguments[4]);
  const auto read = [&](const std::optional<std::string>& text) {
    if (reader == "expat") {
      readWithExpat(*text);
    } else if (reader == "libxml2") {
      readWithLibxml2(*text);
    } else {
      readAsHost(text, hostName(line));
    }
  };
  read(document({"", 1, 1, 100, 1}, isEscaped));  // so that code and first tables are there
  const std::optional<std::string> text = document(shape, isEscaped);
  const ProcessMemory memory;
  read(text);
  printNumbers({memory.peakGrowth()});
}

void compareMemory() {
  printHeading("Reading a document, peak memory above the document", "KB");
  for (const bool isEscaped : {false, true}) {
    for (std::size_t index = 0; index < std::size(kShapes); ++index) {
      const Shape& shape = kShapes[index];
      const auto run = [&](const std::string& reader, int line) {
        return Arguments{"--memory", std::to_string(index), isEscaped ? "escaped" : "CDATA", reader,
                         std::to_string(line)};
      };
      const auto use =
          runsInTurns(rounds(5), {run("QORIX", 0), run("QORIX", shape.lines - 1),
                                  run("QORIX", shape.lines), run("expat", 0), run("libxml2", 0)});
      const double most = std::max({use[0][0], use[1][0], use[2][0]});
      const double size = static_cast<double>(document(shape, isEscaped).size()) / 1024;
      const std::string what =
          std::string(shape.name) + (isEscaped ? ", escaped" : ", CDATA") + ", the dearest host";
      printRow({what, most, "the document", size, 0.5});
      printRow({what, most, "libxml2, its tree", use[4][0], {}});
      printRow({"expat alone", use[3][0], "the document", size, {}});
    }
  }
}

void compare() {
  compareTimes(false);
  compareTimes(true);
  compareMemory();
}

}  // namespace
}  // namespace qorix::bench

int main(int argc, char** argv) {
  if (argc == 6) {
    qorix::bench::measureMemory({argv + 1, argv + argc});
    return EXIT_SUCCESS;
  }
  return qorix::bench::report(qorix::bench::compare);
}
