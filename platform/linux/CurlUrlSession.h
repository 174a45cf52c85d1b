#pragma once

#include <memory>

#include <qorix/platform/UrlSession.h>

#include "platform/linux/HttpQueue.h"

namespace qorix {

/// Sessions over libcurl. Each has a queue of its own, whose errors it passes on.
class CurlUrlSessionFactory : public UrlSessionFactory {
 public:
  using Options = HttpOptions;

  CurlUrlSessionFactory();
  explicit CurlUrlSessionFactory(Options options);

  /// A delegate call that has begun may still be running when the session's destructor returns;
  /// none begins later. The destructor may run inside a delegate call.
  std::shared_ptr<UrlSession> createEphemeralSession(
      std::weak_ptr<UrlSessionDelegate> delegate) override;

 private:
  Options options_;
};

}  // namespace qorix
