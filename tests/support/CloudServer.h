#pragma once

#include <functional>
#include <string>

#include "examples/server/CloudRecords.h"
#include "platform/CloudContainer.h"
#include "support/LoopbackServer.h"

namespace qorix {

/// A cloud service on loopback with one container, whose public database refuses what the real one
/// refuses. Records are never added while a query is under way.
class CloudServer {
 public:
  static constexpr const char* kContainer = "iCloud.com.example.ads";
  static constexpr const char* kToken = "a+token/with=signs";

  /// Asks for what `addAdFile` adds.
  static CloudQuery adFileQuery() { return {"macadfiles", "filename", "commonad"}; }

  explicit CloudServer(LoopbackServer::Security security = LoopbackServer::Security::plain,
                       const std::string& environment = "production");

  /// A record of type "macadfiles" whose "filename" is "commonad" and whose "filecontents" is an
  /// asset that is answered so; `size` is what the record says of it.
  void addAdFile(const LoopbackServer::Answer& asset, std::size_t size);
  /// The same with a sound asset.
  void addAdFile(const std::string& text) { addAdFile({.body = {text}}, text.size()); }

  /// The database, for other records and for page sizes.
  CloudRecords& records() { return records_; }
  /// Under the database, for requests and for answers that are not its own.
  LoopbackServer& server() { return server_; }
  /// Queries are answered so from now on.
  void setAnswer(LoopbackServer::Answer answer);

  /// How often assets have been asked for.
  int downloads() const;
  int queries() const;

 private:
  LoopbackServer server_;
  CloudRecords records_;
  int assets_ = 0;
};

}  // namespace qorix
