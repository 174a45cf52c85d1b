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
  /// A request ends with an error if nothing arrives for this long. Connecting counts; time spent
  /// in the functions of other requests does not.
  double idleLimitSeconds = 60;
  /// A request ends with an error if its response's body has more bytes than this, as sent or
  /// decoded. Far more than any document has, and little enough for a host's memory.
  std::size_t mostBytes = std::size_t{64} << 20;
  /// A PEM file of the certificates to trust; empty for those of the system.
  std::string certificateAuthorityFile = {};
};

/// One request over HTTP or HTTPS; any other address is an error. Keeps no cookies, cache or
/// credentials, and bypasses every cache. Both functions are required. They are called on the
/// queue's thread; a call may take long, but the queue's other requests wait for it. Both are
/// released at the request's end.
struct HttpRequest {
  Url url;
  /// What is sent, with POST; if absent, the request is a GET.
  std::optional<std::string> body = {};
  /// Further header lines, "Content-Type: application/json".
  std::vector<std::string> headers = {};
  /// Follows up to twenty redirects, from https only to https.
  bool followsRedirects = true;

  /// Takes the next bytes of the final response's body, decoded; they are valid during the call.
  /// Returning false ends the request with an error, and so does an exception.
  std::function<bool(std::string_view, int status)> receive = {};
  /// The request has ended; no call follows. Without an error the whole body has been received,
  /// whatever the HTTP status. `status` is 0 if there was no response. If a call without an error
  /// throws, it is repeated with one; if that throws std::bad_alloc, it is repeated every second.
  std::function<void(const std::optional<Error>&, int status)> complete = {};
};

/// Runs requests with libcurl on a thread of its own, which starts with the first request. Errors
/// have the domain "curl" and libcurl's codes. At an ordinary exit of the process every queue is
/// stopped, and its thread ended, before the libraries below are torn down.
class HttpQueue {
 public:
  /// The first queue of a process sets libcurl up, which takes a while.
  explicit HttpQueue(HttpOptions options);
  HttpQueue(const HttpQueue&) = delete;
  HttpQueue& operator=(const HttpQueue&) = delete;
  /// Ends the requests under way, without calling their functions and without waiting. A call that
  /// has begun may still be running afterwards; the destructor may run inside such a call.
  ~HttpQueue();

  /// Sets libcurl up without making a queue.
  static void prepare();

  /// Returns at once. Any thread. If the queue's thread cannot be made, the request ends with that
  /// error on the main thread, and the next request tries again.
  void start(HttpRequest request);

  const HttpOptions& options() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace qorix
