#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/ContentDecoder.h"
#include "platform/linux/HttpChannel.h"
#include "platform/linux/HttpQueue.h"

namespace qorix {

/// One request under way. What its functions throw does not leave it, but ends the request with an
/// error.
class HttpTransfer {
 public:
  using Clock = std::chrono::steady_clock;

  /// Leaves `request` as it is if there is no memory for the transfer.
  HttpTransfer(HttpRequest&& request, std::shared_ptr<HttpChannel> channel,
               const HttpOptions& options);
  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;

  /// Makes `easy` ready to be performed. If it cannot, returns the code to complete with. All times
  /// are how long the queue has waited for its connections altogether.
  CURLcode prepare(Clock::duration now) noexcept;

  CURL* easy() const { return easy_.get(); }

  /// Notes what has arrived since the last call.
  void look(Clock::duration now);
  /// When something arrived last.
  Clock::duration lastArrival() const { return lastArrival_; }
  /// Whether more has arrived than is allowed. The bodies of redirects count, though nobody
  /// receives them.
  bool isTooLarge() const;

  /// @{
  /// Report how the transfer ended. False if there is no memory for that: `completeAgain` is to be
  /// called later, until it returns true.
  bool complete(CURLcode code) noexcept;
  bool completeIdle() noexcept;
  bool completeTooLarge() noexcept;
  bool completeAgain() noexcept;
  /// @}

 private:
  struct CleanUp {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  void configure();
  void configureMethod();
  void addHeader(const std::string& header);
  static int handleRequest(void* transfer, char* remoteAddress, char* localAddress, int remotePort,
                           int localPort);
  static std::size_t handleData(char* bytes, std::size_t one, std::size_t size, void* transfer);
  bool receive(std::string_view bytes) noexcept;
  CURLcode decode(std::string_view bytes);
  bool report(CURLcode code) noexcept;
  void reportFault(CURLcode code);
  void noteUnreported(CURLcode code) noexcept;
  int status() const;
  std::string contentEncodings() const;
  CURLcode fail(CURLcode code, const char* text) noexcept;
  CURLcode failWithException() noexcept;

  const HttpOptions options_;
  const std::shared_ptr<HttpChannel> channel_;
  std::unique_ptr<curl_slist, CleanUp> headers_;
  std::array<char, CURL_ERROR_SIZE> errorText_{};
  const std::unique_ptr<CURL, CleanUp> easy_;
  const HttpRequest request_;
  std::unique_ptr<ContentDecoder> decoder_;
  CURLcode failureCode_ = CURLE_OK;
  const char* failureText_ = nullptr;  // null unless we ended the transfer
  CURLcode unreportedCode_ = CURLE_OK;
  long headerSize_ = 0;
  curl_off_t bodySize_ = 0;        // of the response under way, which may be a redirect
  std::size_t receivedBytes_ = 0;  // of the final response's body
  Clock::duration lastArrival_{};
};

}  // namespace qorix
