#pragma once

#include <string>

#include <qorix/platform/CloudContainer.h>

#include "platform/linux/HttpQueue.h"

namespace qorix {

/// Containers over CloudKit Web Services: the public databases that other platforms' hosts read as
/// well. Errors have the domain "CloudKit", with the HTTP status as code, or "curl".
class CloudKitContainerFactory : public CloudContainerFactory {
 public:
  struct Options {
    /// Where the service is; https, or http for a server of one's own.
    std::string serviceAddress = "https://api.apple-cloudkit.com";
    /// "development" or "production".
    std::string environment = "production";
    /// Lets everybody read the public databases; made in the container's dashboard. Empty: no
    /// container can be made.
    std::string apiToken = {};
    HttpOptions http = {};
  };

  explicit CloudKitContainerFactory(Options options);

  /// Null also, after one log line, when the service's address or the environment cannot be used.
  std::shared_ptr<CloudContainer> containerWithIdentifier(const std::string& identifier) override;

 private:
  const Options options_;
};

}  // namespace qorix
