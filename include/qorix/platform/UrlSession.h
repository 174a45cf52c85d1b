#pragma once

// Platform: values and ports.

#include <memory>
#include <optional>
#include <string_view>

#include <qorix/Export.h>
#include <qorix/platform/Error.h>
#include <qorix/platform/Url.h>

namespace qorix {

class UrlSession;

/// Receives what a session's tasks bring. Called on the session's private thread, one call at a
/// time; on the main thread when no such thread can be made.
class QORIX_EXPORT UrlSessionDelegate {
 public:
  virtual ~UrlSessionDelegate() = default;

  /// The next bytes of a response's body, in the order of arrival. `data` is valid during the call.
  virtual void urlSessionDidReceiveData(std::string_view data) = 0;

  /// The task has ended; no call follows for it. `error` is absent when the whole body has been
  /// delivered, whatever the HTTP status.
  virtual void urlSessionDidCompleteWithError(const std::optional<Error>& error) = 0;
};

/// Fetches addresses over HTTP(S). Keeps no cookies, cache or credentials between tasks.
class QORIX_EXPORT UrlSession {
 public:
  /// Ends the tasks under way without a further call to the delegate; returns without waiting for
  /// the network.
  virtual ~UrlSession() = default;

  /// Starts one plain GET that bypasses every cache and follows redirects (from https only to
  /// https), and returns at once. The task ends with an error after 60 seconds without data, and
  /// when the body is larger than 64 MiB, as it is sent or decoded; there is no limit on the time
  /// of the whole. An address that cannot be fetched, and a task that cannot be run, are errors as
  /// well. The delegate is kept alive until the task has ended. Any thread.
  virtual void startDataTask(const Url& url) = 0;
};

/// Makes sessions. Any thread.
class QORIX_EXPORT UrlSessionFactory {
 public:
  virtual ~UrlSessionFactory() = default;

  /// A new session. Between tasks the delegate is held weakly: once it is gone, none is started.
  virtual std::shared_ptr<UrlSession> createEphemeralSession(
      std::weak_ptr<UrlSessionDelegate> delegate) = 0;
};

}  // namespace qorix
