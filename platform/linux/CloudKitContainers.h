#pragma once

#include <string>

#include <qorix/platform/CloudContainer.h>

#include "platform/linux/HttpQueue.h"

namespace qorix {

/// Containers over CloudKit Web Services: the public databases that hosts on other platforms read,
/// too. Errors have the domain "CloudKit" and the HTTP status as code, or the domain "curl".
class CloudKitContainerFactory : public CloudContainerFactory {
 public:
  struct Options {
    /// Where the service is: https, or http for a server of one's own.
    std::string serviceAddress = "https://api.apple-cloudkit.com";
    /// "development" or "production".
    std::string environment = "production";
    /// The token with which everybody may read the public databases, from the container's
    /// dashboard. Without one no container can be made.
    std::string apiToken = {};
    HttpOptions http = {};
  };

  explicit CloudKitContainerFactory(Options options);

  /// Also returns null, after one log line, if the service's address or the environment cannot be
  /// used.
  std::shared_ptr<CloudContainer> containerWithIdentifier(const std::string& identifier) override;

 private:
  const Options options_;
};

}  // namespace qorix
