#include <curl/curl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>
#include <zlib.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <new>
#include <thread>

#include <qorix/platform/Platform.h>

#include "fakes/FakeRunLoop.h"
#include "fakes/RecordingLog.h"
#include "platform/linux/CurlUrlSession.h"
#include "support/LoopbackServer.h"
#include "support/NoThreads.h"
#include "support/RecordingUrlSessionDelegate.h"
#include "support/Sanitizer.h"

namespace qorix {
namespace {

using Answer = LoopbackServer::Answer;
using Clock = std::chrono::steady_clock;
using Ending = LoopbackServer::Ending;
using Security = LoopbackServer::Security;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// `text` as zlib compresses it with those window bits.
std::string deflated(const std::string& text, int windowBits) {
  z_stream stream{};
  std::string bytes(text.size() + 100, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_out = static_cast<uInt>(bytes.size());
  if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) !=
          Z_OK ||
      deflate(&stream, Z_FINISH) != Z_STREAM_END) {
    ADD_FAILURE();
  }
  bytes.resize(stream.total_out);
  deflateEnd(&stream);
  return bytes;
}

class CurlUrlSessionTest : public ::testing::Test {
 protected:
  CurlUrlSessionTest() {
    for (const char* name :
         {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
      ::unsetenv(name);
    }
  }

  void open(CurlUrlSessionFactory::Options options = {}) {
    session_ = CurlUrlSessionFactory(std::move(options)).createEphemeralSession(delegate_);
  }

  void start(const std::string& url) { session_->startDataTask(Url::parse(url).value()); }

  /// Fetches `url` and returns the outcome.
  std::optional<Error> fetch(const std::string& url) {
    if (session_ == nullptr) {
      open();
    }
    const std::size_t before = delegate_->outcomes().size();
    start(url);
    if (!delegate_->waitForOutcomes(before + 1)) {
      ADD_FAILURE() << "no outcome for " << url;
      return std::nullopt;
    }
    return delegate_->outcomes().at(before);
  }

  std::optional<Error> fetchAnswer(Answer answer) {
    server_.setAnswer("/ad.xml", std::move(answer));
    return fetch(server_.url("/ad.xml"));
  }

  std::optional<Error> fetchEncoded(const std::string& encoding, const std::string& body) {
    return fetchAnswer({.headers = {{"Content-Encoding", encoding}}, .body = {body}});
  }

  void expectDecoded(const std::string& encoding, const std::string& body,
                     const std::string& decoded) {
    const std::string before = delegate_->body();
    const auto error = fetchEncoded(encoding, body);
    EXPECT_FALSE(error.has_value()) << encoding << ": " << error->description;
    EXPECT_TRUE(delegate_->body() == before + decoded) << encoding;
  }

  static void expectSuccess(const std::optional<Error>& error) {
    EXPECT_FALSE(error.has_value()) << error->code << ' ' << error->description;
  }

  static void expectError(const std::optional<Error>& error, CURLcode code) {
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain, "curl");
    EXPECT_EQ(error->code, code) << error->description;
    EXPECT_NE(error->description, "");
  }

  LoopbackServer server_;
  std::shared_ptr<RecordingUrlSessionDelegate> delegate_ =
      std::make_shared<RecordingUrlSessionDelegate>();
  std::shared_ptr<UrlSession> session_;
};

TEST_F(CurlUrlSessionTest, sixtySecondsOfSilenceEndATransferUnlessToldOtherwise) {
  EXPECT_EQ(CurlUrlSessionFactory::Options().idleLimitSeconds, 60);
}

TEST_F(CurlUrlSessionTest, asksPlainlyAndPastEveryCache) {
  expectSuccess(fetchAnswer({.body = {"text"}}));
  ASSERT_EQ(server_.requests().size(), 1U);
  const auto request = server_.requests()[0];
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.target, "/ad.xml");
  EXPECT_EQ(request.header("cache-control"), "no-cache");
  EXPECT_EQ(request.header("cookie"), "");
  EXPECT_EQ(request.header("authorization"), "");
  EXPECT_EQ(request.header("if-modified-since"), "");
  EXPECT_EQ(request.header("if-none-match"), "");
}

TEST_F(CurlUrlSessionTest, anErrorStatusIsNoError) {
  for (const int status : {404, 500, 304, 401}) {
    const std::string page = status == 304 ? "" : "<h1>Sorry " + std::to_string(status) + "</h1>";
    const std::string before = delegate_->body();
    expectSuccess(fetchAnswer({.status = status, .body = {page}}));
    EXPECT_EQ(delegate_->body(), before + page);
  }
}

TEST_F(CurlUrlSessionTest, bytesArriveAsTheyAre) {
  const std::string latin1("caf\xE9 \xFF\0 \x80", 8);
  expectSuccess(fetchAnswer(
      {.headers = {{"Content-Type", "text/html; charset=iso-8859-1"}}, .body = {latin1}}));
  EXPECT_EQ(delegate_->body(), latin1);
}

TEST_F(CurlUrlSessionTest, piecesArriveOneByOneAndInOrder) {
  server_.setAnswer("/ad.xml",
                    {.body = {"caf\xC3", "\xA9"}, .isChunked = true, .waitsBetweenPieces = true});
  open();
  start(server_.url("/ad.xml"));
  ASSERT_TRUE(delegate_->waitForBodySize(4));
  EXPECT_EQ(delegate_->body(), "caf\xC3");
  server_.releasePiece();
  ASSERT_TRUE(delegate_->waitForOutcomes());
  EXPECT_EQ(delegate_->body(), "caf\xC3\xA9");
  EXPECT_EQ(delegate_->pieces(), 2U);
  expectSuccess(delegate_->outcomes()[0]);
}

TEST_F(CurlUrlSessionTest, aLargeBodyArrivesWhole) {
  std::string body(50'000'000, ' ');
  for (std::size_t i = 0; i < body.size(); ++i) {
    body[i] = static_cast<char>(i * 2'654'435'761U >> 24);
  }
  expectSuccess(fetchAnswer({.body = {body}}));
  EXPECT_TRUE(delegate_->body() == body);
}

// Failures.

TEST_F(CurlUrlSessionTest, aConnectionThatIsCutIsAnError) {
  expectError(fetchAnswer({.body = {"half of it"}, .ending = Ending::cut}), CURLE_PARTIAL_FILE);
  EXPECT_EQ(delegate_->body(), "half of it");
}

TEST_F(CurlUrlSessionTest, aChunkedBodyThatIsCutIsAnError) {
  const auto error =
      fetchAnswer({.body = {"half of it"}, .isChunked = true, .ending = Ending::cut});
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->domain, "curl");
}

TEST_F(CurlUrlSessionTest, nobodyAtThePortIsAnError) {
  std::string url;
  {
    const LoopbackServer gone;
    url = gone.url("/");
  }
  expectError(fetch(url), CURLE_COULDNT_CONNECT);
}

TEST_F(CurlUrlSessionTest, anAnswerThatIsNoHttpIsAnError) {
  RawServer server([](RawServer::Connection& connection) {
    connection.readRequest();
    connection.send("SSH-2.0-hello\r\n");
  });
  expectError(fetch(server.url("/")), CURLE_UNSUPPORTED_PROTOCOL);
  EXPECT_EQ(delegate_->body(), "");
}

TEST_F(CurlUrlSessionTest, noAnswerAtAllIsAnError) {
  RawServer server([](RawServer::Connection& connection) { connection.readRequest(); });
  expectError(fetch(server.url("/")), CURLE_GOT_NOTHING);
}

TEST_F(CurlUrlSessionTest, anAddressThatCannotBeFetchedIsAnError) {
  for (const char* address : {"commonad.xml", "//127.0.0.1/x", "127.0.0.1/x"}) {
    expectError(fetch(address), CURLE_UNSUPPORTED_PROTOCOL);
  }
  // libcurl would take the path for a host.
  const std::string path = server_.url("/").substr(std::string("http://").size());
  for (const auto& address : {std::string("https://"), "http:///" + path, "http:" + path}) {
    expectError(fetch(address), CURLE_URL_MALFORMAT);
  }
  EXPECT_TRUE(server_.requests().empty());
}

TEST_F(CurlUrlSessionTest, otherSchemesAreErrors) {
  expectError(fetch("file:///etc/hostname"), CURLE_UNSUPPORTED_PROTOCOL);
  expectError(fetch("ftp://127.0.0.1/file"), CURLE_UNSUPPORTED_PROTOCOL);
  EXPECT_EQ(delegate_->body(), "");
}

TEST_F(CurlUrlSessionTest, everyAttemptStartsAfreshAfterAFailure) {
  expectError(fetchAnswer({.body = {"half"}, .ending = Ending::cut}), CURLE_PARTIAL_FILE);
  expectSuccess(fetchAnswer({.body = {"whole"}}));
  EXPECT_EQ(delegate_->body(), "halfwhole");
}

// What a response may hold.

TEST_F(CurlUrlSessionTest, aBodyMayHold64MebibytesUnlessToldOtherwise) {
  EXPECT_EQ(CurlUrlSessionFactory::Options().mostBytes, 67'108'864U);
}

TEST_F(CurlUrlSessionTest, aBodyThatHoldsMoreThanItMayIsAnError) {
  open({.mostBytes = 1000});
  expectSuccess(fetchAnswer({.body = {std::string(1000, 'x')}}));
  EXPECT_EQ(delegate_->body().size(), 1000U);
  expectError(fetchAnswer({.body = {std::string(1000, 'x'), "x"}, .isChunked = true}),
              CURLE_FILESIZE_EXCEEDED);
  EXPECT_LE(delegate_->body().size(), 2000U);
}

TEST_F(CurlUrlSessionTest, aBodyIsNotAwaitedThatIsAnnouncedToHoldMoreThanItMay) {
  RawServer server([](RawServer::Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\nfirst");
    connection.waitForClose();
  });
  open({.mostBytes = 1000});
  expectError(fetch(server.url("/")), CURLE_FILESIZE_EXCEEDED);
  EXPECT_EQ(delegate_->body(), "");
}

TEST_F(CurlUrlSessionTest, aBodyThatDecodesToMoreThanItMayIsAnError) {
  open({.mostBytes = 1 << 20});
  const auto fetchDecoded = [this](std::size_t size) {
    return fetchAnswer(
        {.headers = {{"Content-Encoding", "gzip"}}, .body = {gzipped(std::string(size, 'x'))}});
  };
  expectSuccess(fetchDecoded(1 << 20));
  EXPECT_EQ(delegate_->body().size(), 1U << 20);
  expectError(fetchDecoded((1 << 20) + 1), CURLE_FILESIZE_EXCEEDED);
  EXPECT_LE(delegate_->body().size(), 2U << 20);
}

TEST_F(CurlUrlSessionTest, aBodyThatDecodesToMoreOnTheWayThanItMayIsAnError) {
  open({.mostBytes = 1 << 20});
  const std::string empty = gzipped("");
  std::string nothing;
  for (int i = 0; i < 60'000; ++i) {
    nothing += empty;
  }
  expectError(
      fetchAnswer({.headers = {{"Content-Encoding", "gzip, gzip"}}, .body = {gzipped(nothing)}}),
      CURLE_FILESIZE_EXCEEDED);
}

TEST_F(CurlUrlSessionTest, aRedirectThatDoesNotEndIsAnError) {
  RawServer server([](RawServer::Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 302 Found\r\nLocation: /x\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string chunk = "3e8\r\n" + std::string(1000, 'x') + "\r\n";
    while (connection.send(chunk)) {
    }
  });
  open({.mostBytes = 1 << 20});
  expectError(fetch(server.url("/")), CURLE_FILESIZE_EXCEEDED);
}

// What the delegate throws.

TEST_F(CurlUrlSessionTest, aDelegateWithoutMemoryForTheBodyEndsTheTask) {
  open();
  bool throws = true;
  delegate_->onData = [&throws] {
    if (throws) {
      throw std::bad_alloc();
    }
  };
  expectError(fetchAnswer({.body = {"text"}}), CURLE_OUT_OF_MEMORY);
  throws = false;
  expectSuccess(fetchAnswer({.body = {"text"}}));
  EXPECT_EQ(delegate_->body(), "text");
}

TEST_F(CurlUrlSessionTest, aDelegateThatThrowsAnythingEndsTheTask) {
  open();
  delegate_->onData = [] { throw 7; };
  expectError(fetchAnswer({.body = {"text"}}), CURLE_WRITE_ERROR);
}

TEST_F(CurlUrlSessionTest, anEndThatTheDelegateHasNoMemoryForIsAnError) {
  open();
  int calls = 0;
  delegate_->onCompletion = [&calls] {
    if (++calls == 1) {
      throw std::bad_alloc();
    }
  };
  expectError(fetchAnswer({.body = {"text"}}), CURLE_OUT_OF_MEMORY);
  EXPECT_EQ(calls, 2);
}

TEST_F(CurlUrlSessionTest, anErrorThatTheDelegateHasNoMemoryForIsReportedAgain) {
  const auto log = std::make_shared<RecordingLog>();
  Platform services = nullPlatform();
  services.log = log;
  installPlatform(std::move(services));
  open();
  int calls = 0;
  delegate_->onCompletion = [&calls] {
    if (++calls <= 4) {
      throw std::bad_alloc();
    }
  };
  expectError(fetchAnswer({.body = {"text"}}), CURLE_OUT_OF_MEMORY);
  EXPECT_EQ(calls, 5);
  EXPECT_THAT(log->lines(), ElementsAre("The outcome of a transfer waits for memory."));
}

TEST_F(CurlUrlSessionTest, anErrorThatTheDelegateCannotTakeIsDropped) {
  const auto log = std::make_shared<RecordingLog>();
  Platform services = nullPlatform();
  services.log = log;
  installPlatform(std::move(services));
  open();
  int calls = 0;
  delegate_->onCompletion = [&calls] {
    if (++calls <= 2) {
      throw 7;
    }
  };
  server_.setAnswer("/ad.xml", {.body = {"text"}});
  start(server_.url("/ad.xml"));
  expectSuccess(fetch(server_.url("/ad.xml")));
  EXPECT_EQ(calls, 3);
  EXPECT_THAT(log->lines(), ElementsAre("The outcome of a transfer could not be handled."));
}

// Without a thread.

TEST_F(CurlUrlSessionTest, aTaskThatNoThreadCanRunIsAnErrorOnTheMainThread) {
  const auto runLoop = std::make_shared<FakeRunLoop>();
  Platform services = nullPlatform();
  services.mainRunLoop = runLoop;
  installPlatform(std::move(services));
  open();
  server_.setAnswer("/ad.xml", {.body = {"text"}});
  {
    const NoThreads noThreads;
    start(server_.url("/ad.xml"));
  }
  EXPECT_TRUE(delegate_->outcomes().empty()) << "not inside the call";
  runLoop->runUntilIdle();
  ASSERT_EQ(delegate_->outcomes().size(), 1U);
  expectError(delegate_->outcomes()[0], CURLE_FAILED_INIT);
  EXPECT_EQ(delegate_->thread(), std::this_thread::get_id());
  expectSuccess(fetch(server_.url("/ad.xml")));
}

TEST_F(CurlUrlSessionTest, aTaskThatNoThreadCanRunEndsWithItsSession) {
  const auto runLoop = std::make_shared<FakeRunLoop>();
  Platform services = nullPlatform();
  services.mainRunLoop = runLoop;
  installPlatform(std::move(services));
  open();
  {
    const NoThreads noThreads;
    start(server_.url("/ad.xml"));
  }
  session_ = nullptr;
  runLoop->runUntilIdle();
  EXPECT_TRUE(delegate_->outcomes().empty());
}

// The idle limit.

TEST_F(CurlUrlSessionTest, aStalledBodyEndsAtTheIdleLimit) {
  open({.idleLimitSeconds = 1});
  const auto start = Clock::now();
  expectError(fetchAnswer({.body = {"first"}, .ending = Ending::stall}), CURLE_OPERATION_TIMEDOUT);
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  EXPECT_GE(elapsed.count(), 1);
  EXPECT_LT(elapsed.count(), 8);
  EXPECT_EQ(delegate_->body(), "first");
}

TEST_F(CurlUrlSessionTest, aServerThatNeverAnswersEndsAtTheIdleLimit) {
  RawServer server([](RawServer::Connection& connection) { connection.waitForClose(); });
  open({.idleLimitSeconds = 0.3});
  const auto start = Clock::now();
  expectError(fetch(server.url("/")), CURLE_OPERATION_TIMEDOUT);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(CurlUrlSessionTest, aHandshakeThatNeverEndsEndsAtTheIdleLimit) {
  RawServer server([](RawServer::Connection& connection) { connection.waitForClose(); });
  open({.idleLimitSeconds = 0.3});
  expectError(fetch("https://127.0.0.1:" + std::to_string(server.port()) + "/"),
              CURLE_OPERATION_TIMEDOUT);
}

TEST_F(CurlUrlSessionTest, theIdleLimitIsNoLimitOnTheWhole) {
  constexpr auto kLimit = std::chrono::milliseconds(1'500);
  const auto end = Clock::now() + 2 * kLimit;
  RawServer server([this, end](RawServer::Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    // Each piece is waited for, so that the body stays small.
    for (std::size_t size = 1;
         Clock::now() < end && connection.send("1\r\nx\r\n") && delegate_->waitForBodySize(size);
         ++size) {
    }
    connection.send("0\r\n\r\n");
  });
  open({.idleLimitSeconds = 1.5});
  expectSuccess(fetch(server.url("/")));
  EXPECT_GE(Clock::now(), end);
}

TEST_F(CurlUrlSessionTest, tasksHaveIdleLimitsOfTheirOwn) {
  open({.idleLimitSeconds = 1});
  server_.setAnswer("/stall", {.ending = Ending::stall});
  start(server_.url("/stall"));
  ASSERT_TRUE(server_.waitForRequests(1));
  expectSuccess(fetchAnswer({.body = {"text"}}));
  ASSERT_TRUE(delegate_->waitForOutcomes(2));
  expectError(delegate_->outcomes()[1], CURLE_OPERATION_TIMEDOUT);
}

// Redirects.

TEST_F(CurlUrlSessionTest, redirectsAreFollowedWithoutTheirBodies) {
  for (const int status : {301, 302, 303, 307, 308}) {
    const std::string before = delegate_->body();
    server_.setAnswer("/old", LoopbackServer::redirect("/new", status));
    server_.setAnswer("/new", {.body = {"text"}});
    expectSuccess(fetch(server_.url("/old")));
    EXPECT_EQ(delegate_->body(), before + "text");
  }
}

TEST_F(CurlUrlSessionTest, followsTwentyRedirectsAndNoMore) {
  server_.setHandler("/hop", [](const LoopbackServer::Request& request) {
    const int left = std::stoi(request.target.substr(request.target.find('=') + 1));
    return left == 0 ? Answer{.body = {"text"}}
                     : LoopbackServer::redirect("/hop?left=" + std::to_string(left - 1));
  });
  expectSuccess(fetch(server_.url("/hop?left=20")));
  EXPECT_EQ(delegate_->body(), "text");
  expectError(fetch(server_.url("/hop?left=21")), CURLE_TOO_MANY_REDIRECTS);
  EXPECT_EQ(delegate_->body(), "text");
}

TEST_F(CurlUrlSessionTest, redirectsToOtherSchemesAreRefused) {
  for (const char* target : {"file:///etc/hostname", "ftp://127.0.0.1/file"}) {
    server_.setAnswer("/old", LoopbackServer::redirect(target));
    expectError(fetch(server_.url("/old")), CURLE_UNSUPPORTED_PROTOCOL);
  }
  EXPECT_EQ(delegate_->body(), "");
}

TEST_F(CurlUrlSessionTest, httpMayLeadToHttps) {
  LoopbackServer secure(Security::tls);
  open({.certificateAuthorityFile = secure.certificateFile()});
  secure.setAnswer("/new", {.body = {"text"}});
  server_.setAnswer("/old", LoopbackServer::redirect(secure.url("/new")));
  expectSuccess(fetch(server_.url("/old")));
  EXPECT_EQ(delegate_->body(), "text");
}

TEST_F(CurlUrlSessionTest, httpsMayLeadToHttps) {
  LoopbackServer secure(Security::tls);
  open({.certificateAuthorityFile = secure.certificateFile()});
  secure.setAnswer("/old", LoopbackServer::redirect("/new"));
  secure.setAnswer("/new", {.body = {"text"}});
  expectSuccess(fetch(secure.url("/old")));
  EXPECT_EQ(delegate_->body(), "text");
}

TEST_F(CurlUrlSessionTest, httpsNeverLeadsToHttp) {
  LoopbackServer secure(Security::tls);
  open({.certificateAuthorityFile = secure.certificateFile()});
  server_.setAnswer("/new", {.body = {"text"}});
  secure.setAnswer("/old", LoopbackServer::redirect(server_.url("/new")));
  expectError(fetch(secure.url("/old")), CURLE_UNSUPPORTED_PROTOCOL);
  EXPECT_EQ(delegate_->body(), "");
  EXPECT_TRUE(server_.requests().empty());
}

TEST_F(CurlUrlSessionTest, httpsNeverLeadsToHttpEvenWhenItBeganWithHttp) {
  LoopbackServer secure(Security::tls);
  open({.certificateAuthorityFile = secure.certificateFile()});
  server_.setAnswer("/first", LoopbackServer::redirect(secure.url("/second")));
  secure.setAnswer("/second", LoopbackServer::redirect(server_.url("/third")));
  server_.setAnswer("/third", {.body = {"text"}});
  expectError(fetch(server_.url("/first")), CURLE_UNSUPPORTED_PROTOCOL);
  EXPECT_EQ(delegate_->body(), "");
  EXPECT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(secure.requests().size(), 1U);
  // Nor does that make a later task stricter.
  expectSuccess(fetch(server_.url("/third")));
}

// TLS.

TEST_F(CurlUrlSessionTest, aServerWithoutTlsIsAnError) {
  const auto error = fetch(server_.url("/ad.xml", "https"));
  expectError(error, CURLE_SSL_CONNECT_ERROR);
}

TEST_F(CurlUrlSessionTest, aCertificateThatNobodyVouchesForIsAnError) {
  LoopbackServer secure(Security::tls);
  secure.setAnswer("/ad.xml", {.body = {"text"}});
  expectError(fetch(secure.url("/ad.xml")), CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_TRUE(secure.requests().empty());
}

TEST_F(CurlUrlSessionTest, aCertificateThatIsTrustedIsAccepted) {
  LoopbackServer secure(Security::tls);
  open({.certificateAuthorityFile = secure.certificateFile()});
  secure.setAnswer("/ad.xml", {.body = {"text"}});
  expectSuccess(fetch(secure.url("/ad.xml")));
  EXPECT_EQ(delegate_->body(), "text");
}

// Encodings.

TEST_F(CurlUrlSessionTest, compressedBodiesAreDecoded) {
  const std::string text(200'000, 'x');
  expectSuccess(fetchAnswer({.headers = {{"Content-Encoding", "gzip"}}, .body = {gzipped(text)}}));
  EXPECT_TRUE(delegate_->body() == text);
  EXPECT_THAT(server_.requests()[0].header("accept-encoding"), HasSubstr("gzip"));
}

TEST_F(CurlUrlSessionTest, compressedBodiesMayComeByteByByteAndInSeveralParts) {
  Answer answer{.headers = {{"Content-Encoding", "GZip"}}, .isChunked = true};
  for (const char byte : gzipped("first ") + gzipped("") + gzipped("second")) {
    answer.body.emplace_back(1, byte);
  }
  expectSuccess(fetchAnswer(answer));
  EXPECT_EQ(delegate_->body(), "first second");
}

TEST_F(CurlUrlSessionTest, anEmptyBodyNeedsNoDecoding) {
  expectSuccess(fetchAnswer({.headers = {{"Content-Encoding", "gzip"}}}));
  EXPECT_EQ(delegate_->pieces(), 0U);
}

TEST_F(CurlUrlSessionTest, theEncodingOfARedirectIsNotThatOfItsTarget) {
  Answer redirect = LoopbackServer::redirect("/new");
  redirect.headers.emplace("Content-Encoding", "gzip");
  server_.setAnswer("/old", redirect);
  server_.setAnswer("/new", {.body = {"text"}});
  expectSuccess(fetch(server_.url("/old")));
  EXPECT_EQ(delegate_->body(), "text");
}

TEST_F(CurlUrlSessionTest, aCompressedBodyThatEndsTooEarlyIsAnError) {
  const std::string whole = gzipped(std::string(100'000, 'x') + "end");
  for (const std::size_t missing : {1U, 8U, 20U}) {
    expectError(fetchAnswer({.headers = {{"Content-Encoding", "gzip"}},
                             .body = {whole.substr(0, whole.size() - missing)}}),
                CURLE_BAD_CONTENT_ENCODING);
  }
  expectError(
      fetchAnswer({.headers = {{"Content-Encoding", "gzip"}}, .body = {whole.substr(0, 5)}}),
      CURLE_BAD_CONTENT_ENCODING);
}

TEST_F(CurlUrlSessionTest, aDamagedCompressedBodyIsAnError) {
  std::string body = gzipped("some text to be damaged, some text to be damaged");
  body[body.size() - 6] = static_cast<char>(~body[body.size() - 6]);  // in the checksum
  expectError(fetchEncoded("gzip", body), CURLE_BAD_CONTENT_ENCODING);
  expectError(fetchEncoded("gzip", gzipped("first") + body), CURLE_BAD_CONTENT_ENCODING);
  expectError(fetchEncoded("gzip", "plain text"), CURLE_BAD_CONTENT_ENCODING);
  expectError(fetchEncoded("deflate", "\xFF\xFF\xFF"), CURLE_BAD_CONTENT_ENCODING);
}

TEST_F(CurlUrlSessionTest, deflateComesWithItsFrameOrWithout) {
  const std::string text(200'000, 'x');
  for (const int windowBits : {MAX_WBITS, -MAX_WBITS, MAX_WBITS + 16}) {
    const std::string whole = deflated(text, windowBits);
    expectDecoded("deflate", whole, text);
    Answer answer{.headers = {{"Content-Encoding", "Deflate"}}, .isChunked = true};
    for (const char byte : whole) {
      answer.body.emplace_back(1, byte);
    }
    const std::string before = delegate_->body();
    expectSuccess(fetchAnswer(answer));
    EXPECT_TRUE(delegate_->body() == before + text);
    expectError(fetchEncoded("deflate", whole.substr(0, whole.size() / 2)),
                CURLE_BAD_CONTENT_ENCODING);
  }
  expectDecoded("gzip", deflated(text, MAX_WBITS), text);
}

TEST_F(CurlUrlSessionTest, bytesBehindACompressedBodyAreNoPartOfIt) {
  for (const char* rest : {"\n", "behind it", "\x1F", "\x1Fx"}) {
    expectDecoded("gzip", gzipped("text") + rest, "text");
    expectDecoded("deflate", deflated("text", MAX_WBITS) + rest, "text");
    expectDecoded("deflate", deflated("text", -MAX_WBITS) + rest, "text");
  }
  expectDecoded("gzip", gzipped("text") + std::string(512, '\0'), "text");
  expectError(fetchEncoded("gzip", gzipped("text") + gzipped("more").substr(0, 10)),
              CURLE_BAD_CONTENT_ENCODING);
}

TEST_F(CurlUrlSessionTest, compressionHasSeveralNamesAndLayers) {
  expectDecoded("x-gzip", gzipped("text"), "text");
  expectDecoded("X-GZIP", gzipped("text"), "text");
  expectDecoded("gzip, gzip", gzipped(gzipped("text")), "text");
  expectDecoded(" deflate ,utf-8,, gzip", gzipped(deflated("text", MAX_WBITS)), "text");
  std::string body = "text";
  std::string names;
  for (int layer = 0; layer < 5; ++layer) {
    body = gzipped(body);
    names += "gzip,";
  }
  expectDecoded(names, body, "text");
  expectError(fetchEncoded(names + "gzip", gzipped(body)), CURLE_BAD_CONTENT_ENCODING);
}

TEST_F(CurlUrlSessionTest, severalHeaderLinesNameSeveralLayers) {
  Answer answer{.headers = {{"Content-Encoding", "deflate"}, {"content-encoding", "gzip"}},
                .body = {gzipped(deflated("text", MAX_WBITS))}};
  expectSuccess(fetchAnswer(answer));
  EXPECT_EQ(delegate_->body(), "text");
}

TEST_F(CurlUrlSessionTest, anEncodingThatIsNoCompressionChangesNothing) {
  for (const char* encoding : {"utf-8", "none", "identity", "rot13", "8bit", ""}) {
    expectDecoded(encoding, "some text", "some text");
  }
}

TEST_F(CurlUrlSessionTest, aCompressionThatNobodyAskedForIsAnError) {
  for (const char* encoding : {"br", "ZSTD", "compress", "x-compress", "gzip, br"}) {
    expectError(fetchEncoded(encoding, "???"), CURLE_BAD_CONTENT_ENCODING);
  }
  EXPECT_EQ(delegate_->body(), "");
}

// Nothing is kept.

TEST_F(CurlUrlSessionTest, cookiesAreNotKept) {
  expectSuccess(fetchAnswer({.headers = {{"Set-Cookie", "a=b; Path=/"}}, .body = {"1"}}));
  expectSuccess(fetchAnswer({.body = {"2"}}));
  Answer redirect = LoopbackServer::redirect("/ad.xml");
  redirect.headers.emplace("Set-Cookie", "c=d; Path=/");
  server_.setAnswer("/old", redirect);
  expectSuccess(fetch(server_.url("/old")));
  for (const auto& request : server_.requests()) {
    EXPECT_EQ(request.header("cookie"), "");
  }
}

TEST_F(CurlUrlSessionTest, everyTaskGoesToTheServer) {
  const Answer answer{.headers = {{"Cache-Control", "max-age=3600"}, {"ETag", "\"1\""}},
                      .body = {"text"}};
  expectSuccess(fetchAnswer(answer));
  expectSuccess(fetchAnswer(answer));
  ASSERT_EQ(server_.requests().size(), 2U);
  EXPECT_EQ(server_.requests()[1].header("if-none-match"), "");
  EXPECT_EQ(delegate_->body(), "texttext");
}

// Threads and lifetimes.

TEST_F(CurlUrlSessionTest, callsTheDelegateOnOneThreadThatIsNotTheCallers) {
  expectSuccess(fetchAnswer({.body = {"text"}}));
  const auto thread = delegate_->thread();
  EXPECT_NE(thread, std::this_thread::get_id());
  expectSuccess(fetchAnswer({.body = {"text"}}));
  EXPECT_EQ(delegate_->thread(), thread);
}

TEST_F(CurlUrlSessionTest, callsComeOneAtATimeWhicheverThreadStartsTheTasks) {
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kTasks = 10;
  std::atomic<int> inside = 0;
  std::atomic<bool> overlapped = false;
  const auto visit = [&] {
    overlapped = overlapped || ++inside > 1;
    std::this_thread::yield();
    --inside;
  };
  delegate_->onData = visit;
  delegate_->onCompletion = visit;
  open();
  server_.setAnswer("/ad.xml", {.body = {"12", "34"}, .isChunked = true});
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([this] {
      for (std::size_t task = 0; task < kTasks; ++task) {
        start(server_.url("/ad.xml"));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  ASSERT_TRUE(delegate_->waitForOutcomes(kThreads * kTasks));
  EXPECT_EQ(delegate_->body().size(), kThreads * kTasks * 4);
  for (const auto& outcome : delegate_->outcomes()) {
    expectSuccess(outcome);
  }
  EXPECT_FALSE(overlapped);
}

TEST_F(CurlUrlSessionTest, endsItsTasksSilentlyAndAtOnce) {
  std::promise<void> closed;
  RawServer server([&closed](RawServer::Connection& connection) {
    connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nfirst");
    connection.waitForClose();
    closed.set_value();
  });
  open();
  start(server.url("/"));
  ASSERT_TRUE(delegate_->waitForBodySize(5));
  const auto start = Clock::now();
  session_.reset();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
  ASSERT_EQ(closed.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_TRUE(delegate_->outcomes().empty());
}

TEST_F(CurlUrlSessionTest, mayEndInsideACallOfItsDelegate) {
  server_.setAnswer("/ad.xml",
                    {.body = {"12", "34"}, .isChunked = true, .waitsBetweenPieces = true});
  std::promise<void> started;  // the session must not end while it is in use elsewhere
  std::promise<void> ended;
  open();
  delegate_->onData = [&] {
    started.get_future().wait();
    session_.reset();
    ended.set_value();
  };
  start(server_.url("/ad.xml"));
  started.set_value();
  ASSERT_EQ(ended.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
  server_.releasePiece();
  ASSERT_TRUE(delegate_->waitForBodySize(2));
  // A second session's end shows that the first one's thread had its chance to go on.
  auto other = std::make_shared<RecordingUrlSessionDelegate>();
  auto session = CurlUrlSessionFactory().createEphemeralSession(other);
  server_.setAnswer("/other", {.body = {"text"}});
  session->startDataTask(*Url::parse(server_.url("/other")));
  ASSERT_TRUE(other->waitForOutcomes());
  EXPECT_EQ(delegate_->body(), "12");
  EXPECT_TRUE(delegate_->outcomes().empty());
}

TEST_F(CurlUrlSessionTest, aTaskTakesADelegateThatOwnsItsSessionAlong) {
  /// A delegate that owns its session, as the library's own source does.
  struct Owner : RecordingUrlSessionDelegate {
    std::shared_ptr<UrlSession> session;
  };
  server_.setAnswer("/ad.xml",
                    {.body = {"te", "xt"}, .isChunked = true, .waitsBetweenPieces = true});
  const auto gone = std::make_shared<std::promise<void>>();
  std::shared_ptr<Owner> owner(new Owner, [gone](const Owner* each) {
    delete each;
    gone->set_value();
  });
  const std::weak_ptr<Owner> watch = owner;
  std::promise<std::string> body;
  owner->onCompletion = [&body, raw = owner.get()] { body.set_value(raw->body()); };
  owner->session = CurlUrlSessionFactory().createEphemeralSession(owner);
  owner->session->startDataTask(*Url::parse(server_.url("/ad.xml")));
  ASSERT_TRUE(owner->waitForBodySize(2));
  owner.reset();
  EXPECT_FALSE(watch.expired());
  server_.releasePiece();
  EXPECT_EQ(body.get_future().get(), "text");
  EXPECT_EQ(gone->get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

TEST_F(CurlUrlSessionTest, nothingIsFetchedForADelegateThatIsGone) {
  open();
  delegate_.reset();
  start(server_.url("/ad.xml"));
  delegate_ = std::make_shared<RecordingUrlSessionDelegate>();
  open();
  expectSuccess(fetchAnswer({.body = {"text"}}));
  EXPECT_EQ(server_.requests().size(), 1U);
}

TEST_F(CurlUrlSessionTest, aSessionThatIsNeverUsedEndsToo) {
  open();
  session_.reset();
}

TEST_F(CurlUrlSessionTest, manySessionsComeAndGo) {
  server_.setAnswer("/ad.xml", {.body = {"text"}});
  for (int i = 0; i < 30; ++i) {
    session_ = nullptr;
    expectSuccess(fetch(server_.url("/ad.xml")));
  }
  EXPECT_EQ(delegate_->body().size(), 30U * 4);
}

// The end of the process.

/// The code that exits runs in a new process, not in a fork: a fork has no threads.
void endInAProcessOfItsOwn() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

/// Leaves a transfer under way and returns; as in a host, its objects are never destroyed.
void leaveTransferUnderWay(Security security) {
  static auto& server = *new LoopbackServer(security);
  server.setAnswer("/ad.xml", {.body = {"first"}, .ending = Ending::stall});
  static auto& delegate = *new std::shared_ptr<RecordingUrlSessionDelegate>(
      std::make_shared<RecordingUrlSessionDelegate>());
  static auto& session = *new std::shared_ptr<UrlSession>(
      CurlUrlSessionFactory({.certificateAuthorityFile = server.certificateFile()})
          .createEphemeralSession(delegate));
  session->startDataTask(Url::parse(server.url("/ad.xml")).value());
  delegate->waitForBodySize(5);
}

TEST_F(CurlUrlSessionTest, exitEndsTransfersUnderWay) {
  endInAProcessOfItsOwn();
  EXPECT_EXIT(
      {
        leaveTransferUnderWay(Security::plain);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(CurlUrlSessionTest, exitEndsEncryptedTransfersUnderWay) {
  endInAProcessOfItsOwn();
  EXPECT_EXIT(
      {
        leaveTransferUnderWay(Security::tls);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(CurlUrlSessionTest, exitMayBeCalledInsideACallOfTheDelegate) {
  endInAProcessOfItsOwn();
  EXPECT_EXIT(
      {
        static auto& server = *new LoopbackServer;
        server.setAnswer("/ad.xml", {.body = {"text"}});
        static auto& delegate = *new std::shared_ptr<RecordingUrlSessionDelegate>(
            std::make_shared<RecordingUrlSessionDelegate>());
        delegate->onCompletion = [] { std::exit(0); };
        static auto& session = *new std::shared_ptr<UrlSession>(
            CurlUrlSessionFactory().createEphemeralSession(delegate));
        session->startDataTask(Url::parse(server.url("/ad.xml")).value());
        delegate->waitForOutcomes();
        std::abort();
      },
      ::testing::ExitedWithCode(0), "");
}

// A sanitizer keeps books that no limit on addresses leaves room for.
constexpr bool kLimitsMemory = !test::kIsSanitized;

/// From now on the process can allocate `bytes` bytes more.
void limitMemory(::rlim_t bytes) {
  if (kLimitsMemory) {
    ::rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const ::rlim_t most = pages * static_cast<::rlim_t>(::sysconf(_SC_PAGESIZE)) + bytes;
    const ::rlimit limit{most, most};
    ::setrlimit(RLIMIT_AS, &limit);
  }
}

TEST_F(CurlUrlSessionTest, aBombIsAnErrorWhereMemoryIsShort) {
  endInAProcessOfItsOwn();
  EXPECT_EXIT(
      {
        std::string bomb;  // of 400 MiB
        for (int i = 0; i < 25; ++i) {
          bomb += gzipped(std::string(std::size_t{16} << 20, 'x'));
        }
        expectSuccess(fetchAnswer({.body = {"text"}}));  // all threads have begun
        limitMemory(std::size_t{40} << 20);
        const auto error = fetchEncoded("gzip", bomb);
        std::exit(error && (error->code == CURLE_OUT_OF_MEMORY ||
                            (!kLimitsMemory && error->code == CURLE_FILESIZE_EXCEEDED))
                      ? 0
                      : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qorix
