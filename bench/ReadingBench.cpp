// What reading an ad configuration document costs beside expat alone, which parses the same bytes
// with handlers that do nothing. The last table gives the ratio for each document and host.

#include <benchmark/benchmark.h>
#include <expat.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Platform.h>

namespace {

struct Document {
  std::string name;
  std::string text;
  std::string firstHost;
  std::string lastHost;
};

std::string hostName(std::size_t index) { return "com.example.host" + std::to_string(index); }

std::string tableLine(std::size_t index) {
  return "    <push_ad_config>\n      <appid>" + hostName(index) + "</appid>\n      <adid>" +
         std::to_string(index + 1) + "</adid>\n    </push_ad_config>\n";
}

std::string page(std::size_t index) {
  return "<!DOCTYPE html>\n<html><head><title>Offer " + std::to_string(index) +
         "</title></head>\n<body style=\"margin:0\">\n<a href=\"https://www.example.com/"
         "app?zamopenout=1\">Try our viewer &amp; converter</a>\n<p>Fast, small, friendly.</p>\n"
         "</body></html>\n";
}

std::string ad(std::size_t index, const std::string& html) {
  return "  <push_ad>\n    <adid>" + std::to_string(index + 1) +
         "</adid>\n    <enable>1</enable>\n    <version>2a1</version>\n    <embed>1</embed>\n"
         "    <width>728</width>\n    <height>90</height>\n    <count>10</count>\n"
         "    <delay>0</delay>\n    <advance>{\"com.example.editor\":{\"offsety\":12}}</advance>\n"
         "    <notes>autumn offer</notes>\n    <title>\n      <en>Try our viewer</en>\n"
         "      <default>Try our viewer</default>\n    </title>\n    <html_contents>\n"
         "      <en><![CDATA[" +
         html + "]]></en>\n      <default>Try our viewer &amp;amp; converter</default>\n" +
         "    </html_contents>\n  </push_ad>\n";
}

std::string documentText(const std::string& table, const std::string& ads) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rootcfg>\n  <data>\n"
         "    <file_version>1</file_version>\n" +
         table + "  </data>\n" + ads + "</rootcfg>\n";
}

Document documentOfSize(std::string name, std::size_t size) {
  std::string table;
  std::string ads;
  std::size_t count = 0;
  while (table.size() + ads.size() < size) {
    table += tableLine(count);
    ads += ad(count, page(count));
    ++count;
  }
  return {std::move(name), documentText(table, ads), hostName(0), hostName(count - 1)};
}

Document documentWithPage(std::string name, std::size_t size) {
  std::string html;
  while (html.size() < size) {
    html += page(html.size());
  }
  return {std::move(name), documentText(tableLine(0), ad(0, html)), hostName(0), hostName(0)};
}

const std::vector<Document>& documents() {
  static const std::vector<Document> kAll = {
      documentOfSize("52 KB", 52'000), documentOfSize("2.1 MB", 2'100'000),
      documentOfSize("41 MB", 41'000'000), documentWithPage("20 MB page", 20'000'000)};
  return kAll;
}

void parseWithExpatAlone(benchmark::State& state, const Document& document) {
  for (auto _ : state) {
    XML_Parser parser = XML_ParserCreate("UTF-8");
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    if (XML_Parse(parser, document.text.data(), static_cast<int>(document.text.size()), 1) !=
        XML_STATUS_OK) {
      state.SkipWithError("expat refused the document");
    }
    XML_ParserFree(parser);
  }
}

void installHost(const std::string& identifier) {
  qorix::Platform platform;
  platform.mainBundle =
      std::make_shared<const qorix::Bundle>(identifier, qorix::Url::fileUrl("/host"));
  qorix::installPlatform(platform);
}

void readDocument(benchmark::State& state, const Document& document, const std::string& host) {
  installHost(host);
  const std::optional<std::string> text = document.text;
  for (auto _ : state) {
    if (qorix::MyPushAdUtil::parseXMLWithString(text) == nullptr) {
      state.SkipWithError("the document was refused");
    }
  }
}

constexpr const char* kExpatAlone = "expat alone";
constexpr const char* kFirstLine = "host at the first line";
constexpr const char* kLastLine = "host at the last line";
constexpr const char* kNoLine = "host without a line";
const std::vector<std::string> kReaders = {kFirstLine, kLastLine, kNoLine};

std::string benchmarkName(const Document& document, const std::string& reader) {
  return document.name + ", " + reader;
}

/// Shows the median of each benchmark's repetitions and keeps the shortest processor time, which a
/// busy machine disturbs least.
class TableReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> shown;
    for (const Run& run : runs) {
      if (run.error_occurred || run.aggregate_name == "median") {
        shown.push_back(run);
      } else if (run.run_type == Run::RT_Iteration) {
        const double time = run.GetAdjustedCPUTime();
        const auto [entry, isNew] = shortest_.try_emplace(run.run_name.function_name, time);
        entry->second = std::min(entry->second, time);
      }
    }
    ConsoleReporter::ReportRuns(shown);
  }

  void printRatios() const {
    std::printf("\nTime to read a document / time of expat alone (shortest of the repetitions)\n");
    for (const Document& document : documents()) {
      const auto alone = shortest_.find(benchmarkName(document, kExpatAlone));
      for (const std::string& reader : kReaders) {
        const auto read = shortest_.find(benchmarkName(document, reader));
        if (alone != shortest_.end() && read != shortest_.end()) {
          std::printf("%-12s %10zu bytes   %-24s %.2f\n", document.name.c_str(),
                      document.text.size(), reader.c_str(), read->second / alone->second);
        }
      }
    }
  }

 private:
  std::map<std::string, double> shortest_;
};

template <class Function>
void add(const std::string& name, Function function) {
  benchmark::RegisterBenchmark(name.c_str(), function)
      ->Unit(benchmark::kMillisecond)
      ->Repetitions(9);
}

void addBenchmarks() {
  for (const Document& document : documents()) {
    add(benchmarkName(document, kExpatAlone),
        [&](benchmark::State& state) { parseWithExpatAlone(state, document); });
    add(benchmarkName(document, kFirstLine),
        [&](benchmark::State& state) { readDocument(state, document, document.firstHost); });
    add(benchmarkName(document, kLastLine),
        [&](benchmark::State& state) { readDocument(state, document, document.lastHost); });
    add(benchmarkName(document, kNoLine),
        [&](benchmark::State& state) { readDocument(state, document, "com.example.unknown"); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  // What is compared takes turns, so that a busy machine slows both down alike.
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, interleaving.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
    return 1;
  }
  addBenchmarks();
  TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios();
}
