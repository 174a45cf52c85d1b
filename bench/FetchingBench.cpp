// Fetching a document of 50 MB over loopback, until the source hands over its text, beside libcurl
// writing to memory. Each run is a process of its own; the server is this one.

#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <qorix/MyPushAdWebServerManager.h>
#include <qorix/platform/Platform.h>

#include "fakes/FakePlatform.h"
#include "platform/linux/CurlUrlSession.h"
#include "support/LoopbackServer.h"
#include "support/Measuring.h"
#include "support/ProcessMemory.h"

namespace qorix::bench {
namespace {

constexpr std::size_t kBytes = 50'000'000;

[[noreturn]] void fail(const char* why) {
  std::fprintf(stderr, "%s\n", why);
  std::exit(EXIT_FAILURE);
}

class Receiver : public MyPushAdDownloadDelegate {
 public:
  void downloadSuccessfullyWithString(const std::string& text) override { size = text.size(); }
  void downloadFailedWithError(const Error& error) override { fail(error.description.c_str()); }

  std::size_t size = 0;
};

std::size_t fetchBySource(const std::string& address) {
  FakePlatform fakes;
  Platform services = fakes.services();
  services.urlSessions = std::make_shared<CurlUrlSessionFactory>();
  installPlatform(services);
  const auto receiver = std::make_shared<Receiver>();
  const auto source = MyPushAdWebServerManager::createInstanceWithFileURLString(address);
  source->setDelegate(receiver);
  source->downloadAdFileAsync();
  if (!fakes.runLoop->waitForWork(60)) {
    fail("nothing was fetched in time");
  }
  return receiver->size;
}

std::size_t fetchByLibcurl(const std::string& address) {
  std::string body;
  CURL* easy = curl_easy_init();
  curl_easy_setopt(easy, CURLOPT_URL, address.c_str());
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
  curl_easy_setopt(
      easy, CURLOPT_WRITEFUNCTION, +[](char* bytes, std::size_t, std::size_t size, void* text) {
        static_cast<std::string*>(text)->append(bytes, size);
        return size;
      });
  if (const CURLcode code = curl_easy_perform(easy); code != CURLE_OK) {
    fail(curl_easy_strerror(code));
  }
  curl_easy_cleanup(easy);
  return body.size();
}

void measure(const std::string& fetcher, const std::string& address) {
  const auto fetch = fetcher == "source" ? fetchBySource : fetchByLibcurl;
  if (fetch(address + "small") != 1) {  // so that code, threads and buffers are there
    fail("the small document did not come");
  }
  const ProcessMemory memory;
  std::size_t size = 0;
  const double time = microsecondsOf([&] { size = fetch(address + "large"); });
  if (size != kBytes) {
    fail("the large document did not come");
  }
  printNumbers({time / 1000, memory.peakGrowth() / 1024});
}

/// Mostly ASCII, as pages are.
std::string largeText() {
  std::string text;
  while (text.size() < kBytes) {
    text += "<p>Größe der Bilder: beliebig. Öffnet auch die, die Sie schon vergessen haben.</p>\n";
  }
  text.resize(kBytes, ' ');
  return text;
}

void compare() {
  LoopbackServer server;
  server.setAnswer("/small", {.body = {"x"}});
  server.setAnswer("/large", {.body = {largeText()}});
  const std::string address = server.url("/");
  const auto found = runsInTurns(rounds(15), {{"source", address}, {"libcurl", address}});
  printHeading("Fetching 50 MB over loopback", "ms");
  printRow({"until the text is handed over", found[0][0], "libcurl to memory", found[1][0], 1.1});
  printHeading("Fetching 50 MB over loopback, peak memory", "MB");
  printRow({"until the text is handed over", found[0][1], "libcurl to memory", found[1][1], 1.1});
}

}  // namespace
}  // namespace qorix::bench

int main(int argc, char** argv) {
  if (argc == 3) {
    qorix::bench::measure(argv[1], argv[2]);
  } else {
    qorix::bench::compare();
  }
}
