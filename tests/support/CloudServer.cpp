#include "support/CloudServer.h"

#include <algorithm>
#include <utility>

namespace qorix {

namespace {

constexpr const char* kAssetFolder = "/assets/";

int countTargets(const LoopbackServer& server, const std::string& beginning) {
  const auto requests = server.requests();
  return static_cast<int>(std::ranges::count_if(
      requests, [&](const auto& request) { return request.target.starts_with(beginning); }));
}

}  // namespace

CloudServer::CloudServer(LoopbackServer::Security security, const std::string& environment)
    : server_(security), records_(kContainer, environment, kToken) {
  const auto answerQuery = [this](const LoopbackServer::Request& request) {
    const std::lock_guard lock(mutex_);
    const auto answer = records_.answer({.method = request.method,
                                         .target = request.target,
                                         .contentType = request.header("content-type"),
                                         .body = request.body});
    return LoopbackServer::Answer{.status = answer.status,
                                  .headers = {{"Content-Type", "application/json"}},
                                  .body = {answer.body}};
  };
  for (const char* name : {"development", "production"}) {
    server_.setHandler(CloudRecords(kContainer, name, kToken).queryPath(), answerQuery);
  }
}

void CloudServer::addAdFile(const LoopbackServer::Answer& asset, std::size_t size) {
  const std::string folder = kAssetFolder + std::to_string(++assets_);
  server_.setAnswer(folder + "/asset", asset);
  addRecord({.type = "macadfiles",
             .texts = {{"filename", "commonad"}},
             .assets = {{"filecontents",
                         {.downloadUrl = server_.url(folder + "/${f}?o=1"), .size = size}}}});
}

void CloudServer::addRecord(CloudRecords::Record record) {
  const std::lock_guard lock(mutex_);
  records_.add(std::move(record));
}

void CloudServer::setPageSize(std::size_t size) {
  const std::lock_guard lock(mutex_);
  records_.setPageSize(size);
}

void CloudServer::setAnswer(LoopbackServer::Answer answer) {
  server_.setAnswer(records_.queryPath(), std::move(answer));
}

void CloudServer::setHandler(LoopbackServer::Handler handler) {
  server_.setHandler(records_.queryPath(), std::move(handler));
}

int CloudServer::downloads() const { return countTargets(server_, kAssetFolder); }

int CloudServer::queries() const { return countTargets(server_, "/database/"); }

}  // namespace qorix
