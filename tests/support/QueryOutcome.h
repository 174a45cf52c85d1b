#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include <qorix/platform/CloudContainer.h>

namespace qorix {

/// What a query's completion was called with, and on which thread.
struct QueryOutcome {
  std::optional<std::vector<std::shared_ptr<CloudRecord>>> records;
  std::optional<Error> error;
  std::thread::id thread;
};

/// One query whose outcome can be waited for.
class PendingQuery {
 public:
  /// Pass it to `CloudDatabase::performQuery`. A second call throws.
  CloudDatabase::Completion completion() {
    auto promise = std::make_shared<std::promise<QueryOutcome>>();
    outcome_ = promise->get_future();
    return [promise](auto records, auto error) {
      promise->set_value({std::move(records), std::move(error), std::this_thread::get_id()});
    };
  }

  bool isOver() const {
    return outcome_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }

  /// Returns `nullopt` if it takes longer than `limit`.
  std::optional<QueryOutcome> wait(std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    return outcome_.wait_for(limit) == std::future_status::ready ? std::optional(outcome_.get())
                                                                 : std::nullopt;
  }

 private:
  std::future<QueryOutcome> outcome_;
};

}  // namespace qorix
