#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include <qorix/platform/CloudContainer.h>

#include "examples/server/CloudRecords.h"
#include "support/LoopbackServer.h"

namespace qorix {

/// A cloud service on loopback with one container. Its public database refuses what the real one
/// refuses.
class CloudServer {
 public:
  static constexpr const char* kContainer = "iCloud.com.example.ads";
  static constexpr const char* kToken = "a+token/with=signs";

  /// Asks for what `addAdFile` adds.
  static CloudQuery adFileQuery() { return {"macadfiles", "filename", "commonad"}; }

  explicit CloudServer(LoopbackServer::Security security = LoopbackServer::Security::plain,
                       const std::string& environment = "production");

  /// A record of type "macadfiles" whose "filename" is "commonad" and whose "filecontents" is an
  /// asset with that answer; `size` is the size in the record.
  void addAdFile(const LoopbackServer::Answer& asset, std::size_t size);
  /// The same with a sound asset.
  void addAdFile(const std::string& text) { addAdFile({.body = {text}}, text.size()); }

  void addRecord(CloudRecords::Record record);
  void setPageSize(std::size_t size);
  /// The HTTP server below the database, to look at requests and to set other answers.
  LoopbackServer& server() { return server_; }
  /// Sets the answer to all later queries.
  void setAnswer(LoopbackServer::Answer answer);
  void setHandler(LoopbackServer::Handler handler);

  /// How often assets have been asked for.
  int downloads() const;
  int queries() const;

 private:
  LoopbackServer server_;
  std::mutex mutex_;  // of the records, which are read on the server's threads
  CloudRecords records_;
  int assets_ = 0;
};

}  // namespace qorix
