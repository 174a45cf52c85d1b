#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <qorix/platform/Error.h>
#include <qorix/platform/Url.h>

namespace qorix {

struct HttpOptions {
  /// A request ends with an error when nothing has arrived for so many seconds; connecting counts,
  /// the calls of other requests do not.
  double idleLimitSeconds = 60;
  /// A request ends with an error when its response's body holds more bytes than this, as it is
  /// sent or decoded. Far more than any document has, and little enough for a host's memory.
  std::size_t mostBytes = std::size_t{64} << 20;
  /// The certificates to trust, a PEM file; empty for those of the system.
  std::string certificateAuthorityFile = {};
};

/// One request over HTTP or HTTPS; any other address is an error. Keeps no cookies, cache or
/// credentials, and bypasses every cache. Both functions are required; they are called on the
/// queue's thread, which has nothing else to do meanwhile: a call may take long, but the queue's
/// other requests wait for it. Both are let go of at the request's end.
struct HttpRequest {
  Url url;
  /// What is sent, with POST; without it the request is a GET.
  std::optional<std::string> body = {};
  /// Further header lines, "Content-Type: application/json".
  std::vector<std::string> headers = {};
  /// Up to twenty, from https only to https.
  bool followsRedirects = true;

  /// Takes the next bytes of the final response's body, decoded; valid during the call. False ends
  /// the request with an error, and so does an exception.
  std::function<bool(std::string_view, int status)> receive = {};
  /// The request has ended; nothing follows. Without an error the whole body has been received,
  /// whatever the HTTP status. `status` is 0 when there was no response. When a call without an
  /// error throws, it is made again with one.
  std::function<void(const std::optional<Error>&, int status)> complete = {};
};

/// Runs requests over libcurl, on a thread of its own that begins with the first one. Errors have
/// the domain "curl" and libcurl's codes. When the process exits in the ordinary way, every queue
/// is stopped and its thread ended before the libraries below it are torn down.
class HttpQueue {
 public:
  /// The first one of a process sets libcurl up, which takes a while.
  explicit HttpQueue(HttpOptions options);
  HttpQueue(const HttpQueue&) = delete;
  HttpQueue& operator=(const HttpQueue&) = delete;
  /// Ends the requests under way without a further call and without waiting for them. A call that
  /// has begun may still be running afterwards; the destructor may run inside of one.
  ~HttpQueue();

  /// Sets libcurl up without making a queue.
  static void prepare();

  /// Returns at once. Any thread. When the queue's thread cannot be made, that is the request's
  /// error, reported on the main thread, and the next request tries again.
  void start(HttpRequest request);

  const HttpOptions& options() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qorix
