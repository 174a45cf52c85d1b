#include "platform/linux/HttpTransfer.h"

#include <new>
#include <optional>
#include <utility>

#include <qorix/platform/Log.h>

#include "platform/Guarded.h"
#include "text/AsciiCase.h"

namespace qorix {

namespace {

constexpr const char* kTooLargeText = "The response holds more than can be taken";

bool isHttps(const char* url) { return url != nullptr && startsWithIgnoringCase(url, "https:"); }

}  // namespace

HttpTransfer::HttpTransfer(HttpRequest&& request, std::shared_ptr<HttpChannel> channel,
                           const HttpOptions& options)
    : options_(options),
      channel_(std::move(channel)),
      easy_(curl_easy_init()),
      request_(std::move(request)) {}

CURLcode HttpTransfer::prepare(Clock::duration now) noexcept {
  lastArrival_ = now;
  try {
    // libcurl would guess a missing scheme, and take a path for a host.
    if (!equalIgnoringCase(request_.url.scheme(), "http") &&
        !equalIgnoringCase(request_.url.scheme(), "https")) {
      return fail(CURLE_UNSUPPORTED_PROTOCOL, "The address is neither http nor https");
    }
    if (request_.url.host().empty()) {
      return fail(CURLE_URL_MALFORMAT, "The address names no host");
    }
    if (easy_ == nullptr) {
      throw std::bad_alloc();
    }
    configure();
    configureMethod();
    return CURLE_OK;
  } catch (...) {
    return failWithException();
  }
}

void HttpTransfer::look(Clock::duration now) {
  long headerSize = 0;
  curl_off_t bodySize = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_HEADER_SIZE, &headerSize);
  curl_easy_getinfo(easy_.get(), CURLINFO_SIZE_DOWNLOAD_T, &bodySize);
  // Both start again from 0 at each redirect, so they are compared for equality, not for more.
  if (headerSize != headerSize_ || bodySize != bodySize_) {
    headerSize_ = headerSize;
    bodySize_ = bodySize;
    lastArrival_ = now;
  }
}

bool HttpTransfer::isTooLarge() const {
  return static_cast<std::size_t>(bodySize_) > options_.mostBytes;
}

bool HttpTransfer::complete(CURLcode code) noexcept {
  if (code == CURLE_OK && decoder_ != nullptr && !decoder_->isComplete()) {
    code = fail(CURLE_BAD_CONTENT_ENCODING, "The compressed body ends too early");
  }
  return report(code);
}

bool HttpTransfer::completeIdle() noexcept {
  return report(fail(CURLE_OPERATION_TIMEDOUT, "Nothing has arrived for too long"));
}

bool HttpTransfer::completeTooLarge() noexcept {
  return report(fail(CURLE_FILESIZE_EXCEEDED, kTooLargeText));
}

bool HttpTransfer::completeAgain() noexcept { return report(unreportedCode_); }

void HttpTransfer::configure() {
  CURL* easy = easy_.get();
  curl_easy_setopt(easy, CURLOPT_URL, request_.url.absoluteString().c_str());
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
  curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, request_.followsRedirects ? 1L : 0L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 20L);
  // Ends a transfer early whose announced length is too large.
  curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(options_.mostBytes));
  curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &HttpTransfer::handleRequest);
  curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &HttpTransfer::handleData);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  // Only the idle limit says how long to wait.
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, 1'000'000L);
  if (!options_.certificateAuthorityFile.empty()) {
    curl_easy_setopt(easy, CURLOPT_CAINFO, options_.certificateAuthorityFile.c_str());
  }
}

void HttpTransfer::configureMethod() {
  addHeader("Cache-Control: no-cache");
  // The body is decoded here: libcurl takes a compressed body that is cut off for a whole one.
  addHeader(std::string("Accept-Encoding: ") + ContentDecoder::kAcceptedEncodings);
  for (const std::string& header : request_.headers) {
    addHeader(header);
  }
  CURL* easy = easy_.get();
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
  if (request_.body) {
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request_.body->data());
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                     static_cast<curl_off_t>(request_.body->size()));
  }
}

void HttpTransfer::addHeader(const std::string& header) {
  curl_slist* whole = curl_slist_append(headers_.get(), header.c_str());
  if (whole == nullptr) {
    throw std::bad_alloc();
  }
  static_cast<void>(headers_.release());
  headers_.reset(whole);
}

/// Called before each request, also after a redirect.
int HttpTransfer::handleRequest(void* transfer, char* /*remoteAddress*/, char* /*localAddress*/,
                                int /*remotePort*/, int /*localPort*/) {
  CURL* easy = static_cast<HttpTransfer*>(transfer)->easy();
  const char* url = nullptr;
  curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &url);
  if (isHttps(url)) {
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "https");
  }
  return CURL_PREREQFUNC_OK;
}

/// Called for the body of the final response only, not for that of a redirect.
std::size_t HttpTransfer::handleData(char* bytes, std::size_t /*one*/, std::size_t size,
                                     void* transfer) {
  return static_cast<HttpTransfer*>(transfer)->receive({bytes, size}) ? size : CURL_WRITEFUNC_ERROR;
}

bool HttpTransfer::receive(std::string_view bytes) noexcept {
  try {
    return decode(bytes) == CURLE_OK;
  } catch (...) {
    failWithException();
    return false;
  }
}

CURLcode HttpTransfer::decode(std::string_view bytes) {
  if (bytes.size() > options_.mostBytes - receivedBytes_) {
    return fail(CURLE_FILESIZE_EXCEEDED, kTooLargeText);
  }
  receivedBytes_ += bytes.size();
  if (decoder_ == nullptr) {
    decoder_ = ContentDecoder::create(contentEncodings(), options_.mostBytes);
  }
  if (decoder_ == nullptr) {
    return fail(CURLE_BAD_CONTENT_ENCODING, "The body is compressed in an unknown way");
  }
  const auto deliver = [this](std::string_view decoded) {
    return !channel_->isStopped() && request_.receive(decoded, status());
  };
  switch (decoder_->decode(bytes, deliver)) {
    case ContentDecoder::Result::ok:
      break;
    case ContentDecoder::Result::damaged:
      return fail(CURLE_BAD_CONTENT_ENCODING, "The compressed body is damaged");
    case ContentDecoder::Result::tooLarge:
      return fail(CURLE_FILESIZE_EXCEEDED, kTooLargeText);
    case ContentDecoder::Result::unwanted:
      return fail(CURLE_WRITE_ERROR, "The body was not wanted any more");
  }
  return CURLE_OK;
}

bool HttpTransfer::report(CURLcode code) noexcept {
  if (channel_->isStopped()) {
    return true;
  }
  if (code == CURLE_OK) {
    try {
      request_.complete(std::nullopt, status());
      return true;
    } catch (...) {
      code = failWithException();
    }
  }
  try {
    reportFault(code);
    return true;
  } catch (const std::bad_alloc&) {
    noteUnreported(code);
    return false;
  } catch (...) {
    callGuarded([] { logLine("The outcome of a transfer could not be handled."); });
    return true;
  }
}

void HttpTransfer::reportFault(CURLcode code) {
  if (failureText_ != nullptr) {
    request_.complete(Error{"curl", failureCode_, failureText_}, status());
  } else {
    const bool hasText = errorText_[0] != '\0';
    request_.complete(Error{"curl", code, hasText ? errorText_.data() : curl_easy_strerror(code)},
                      status());
  }
}

/// Logs it once, however often it is tried.
void HttpTransfer::noteUnreported(CURLcode code) noexcept {
  if (unreportedCode_ == CURLE_OK) {
    callGuarded([] { logLine("The outcome of a transfer waits for memory."); });
  }
  unreportedCode_ = code;
}

int HttpTransfer::status() const {
  long status = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
  return static_cast<int>(status);
}

/// The values of all such header lines, joined.
std::string HttpTransfer::contentEncodings() const {
  std::string encodings;
  curl_header* header = nullptr;
  for (std::size_t index = 0; curl_easy_header(easy_.get(), "Content-Encoding", index, CURLH_HEADER,
                                               -1, &header) == CURLHE_OK;
       ++index) {
    encodings += index == 0 ? "" : ",";
    encodings += header->value;
  }
  return encodings;
}

/// Notes our own reason, which libcurl's code for an aborted transfer would hide.
CURLcode HttpTransfer::fail(CURLcode code, const char* text) noexcept {
  failureCode_ = code;
  failureText_ = text;
  return code;
}

/// The same for the exception that is being handled.
CURLcode HttpTransfer::failWithException() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return fail(CURLE_OUT_OF_MEMORY, "There is not enough memory");
  } catch (...) {
    return fail(CURLE_WRITE_ERROR, "The response could not be handled");
  }
}

}  // namespace qorix
