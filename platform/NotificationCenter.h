#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <unordered_map>

#include "platform/Notification.h"

namespace qorix {

/// Delivers notifications to whoever asked for them. Main thread only.
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;
  using Observation = std::uint64_t;

  /// Calls `handler` for each later notification of that name, whoever sends it. What the handler
  /// throws is logged; the others are called all the same. Ends with `removeObserver`.
  Observation addObserver(const std::string& name, Handler handler);

  /// The handler is not called again, not even by a delivery that is under way. An unknown
  /// observation is ignored.
  void removeObserver(const std::string& name, Observation observation);

  /// Calls the handlers for the notification's name, in the order in which they were added, before
  /// it returns. Handlers added meanwhile hear the next notification only.
  void post(const Notification& notification);

  /// How many observations there are, of all names.
  std::size_t countObservers() const;

 private:
  struct Observer {
    Observation id;
    Handler handler;
    bool removed = false;
  };
  struct Observers {
    std::deque<Observer> list;  // ascending ids; appending moves no element
    int deliveries = 0;         // under way, so that removal must not move anything
    bool hasRemoved = false;
  };

  std::unordered_map<std::string, Observers> observers_;
  Observation lastObservation_ = 0;
};

}  // namespace qorix
