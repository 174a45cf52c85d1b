#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The public database of one cloud container as its web interface shows it: queries by one text
/// field, page by page. Refuses what the real one refuses, with its kind of answer. Knows nothing
/// of connections: whoever serves it hands requests in and answers out.
class CloudRecords {
 public:
  struct Asset {
    std::string downloadUrl;  // "${f}" in it is the reader's to fill
    std::size_t size = 0;
  };
  struct Record {
    std::string type;
    std::map<std::string, std::string> texts;
    std::map<std::string, Asset> assets;
  };
  struct Request {
    std::string method;
    std::string target;  // path and query as sent
    std::string contentType;
    std::string body;
  };
  struct Answer {
    int status;
    std::string body;  // JSON
  };

  CloudRecords(std::string container, std::string environment, std::string token);

  void add(Record record) { records_.push_back(std::move(record)); }
  /// How many records one answer holds at most.
  void setPageSize(std::size_t size) { pageSize_ = size; }

  /// Where queries go.
  std::string queryPath() const;

  Answer answer(const Request& request) const;

 private:
  const std::string container_;
  const std::string environment_;
  const std::string token_;
  std::vector<Record> records_;
  std::size_t pageSize_ = 200;
};
