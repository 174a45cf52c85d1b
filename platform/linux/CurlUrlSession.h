#pragma once

#include <memory>
#include <string>

#include "platform/UrlSession.h"

namespace qorix {

/// Sessions over libcurl, each with a worker thread of its own that begins with its first task.
/// Their errors have the domain "curl" and libcurl's codes. When the process exits in the ordinary
/// way, the workers are ended before the libraries below them are torn down.
class CurlUrlSessionFactory : public UrlSessionFactory {
 public:
  struct Options {
    /// A task ends with an error when nothing has arrived for so many seconds; connecting counts.
    double idleLimitSeconds = 60;
    /// The certificates to trust, a PEM file; empty for those of the system.
    std::string certificateAuthorityFile = {};
  };

  CurlUrlSessionFactory();
  explicit CurlUrlSessionFactory(Options options);

  /// A delegate call that has begun may still be running when the session's destructor returns;
  /// none begins after it. The destructor may run inside a delegate call.
  std::shared_ptr<UrlSession> createEphemeralSession(
      std::weak_ptr<UrlSessionDelegate> delegate) override;

 private:
  Options options_;
};

}  // namespace qorix
