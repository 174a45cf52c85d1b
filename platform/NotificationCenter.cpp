#include <algorithm>
#include <deque>
#include <unordered_map>
#include <utility>
#include <vector>

#include <qorix/platform/NotificationCenter.h>

#include "platform/Guarded.h"

namespace qorix {

struct NotificationCenter::Observers {
  struct Observer {
    std::uint64_t id;
    Handler handler;
    bool removed = false;
  };
  struct OfOneName {
    std::deque<Observer> list;  // ascending ids; appending moves no element
    int deliveries = 0;         // under way, so that removal must not move anything
    bool hasRemoved = false;

    void sweep() {
      std::vector<Handler> gone;  // they may own what removes more when it ends
      for (Observer& each : list) {
        if (each.removed) {
          gone.push_back(std::move(each.handler));
        }
      }
      std::erase_if(list, [](const Observer& each) { return each.removed; });
      hasRemoved = false;
    }
  };

  void remove(const std::string& name, std::uint64_t id) {
    auto& [list, deliveries, hasRemoved] = byName.at(name);
    const auto observer = std::ranges::lower_bound(list, id, {}, &Observer::id);
    if (deliveries == 0) {
      const Handler gone = std::move(observer->handler);  // it may own what removes more
      list.erase(observer);
    } else {
      // The handler may be the one that is running: it is destroyed when the delivery has ended.
      observer->removed = true;
      hasRemoved = true;
    }
  }

  std::unordered_map<std::string, OfOneName> byName;
  std::uint64_t lastId = 0;
};

struct NotificationObservation::Place {
  std::weak_ptr<NotificationCenter::Observers> observers;
  std::string name;
  std::uint64_t id;
};

NotificationObservation::NotificationObservation() noexcept = default;

NotificationObservation::NotificationObservation(std::unique_ptr<Place> place)
    : place_(std::move(place)) {}

NotificationObservation::NotificationObservation(NotificationObservation&&) noexcept = default;

NotificationObservation& NotificationObservation::operator=(
    NotificationObservation&& other) noexcept {
  if (this != &other) {
    end();
    place_ = std::move(other.place_);
  }
  return *this;
}

NotificationObservation::~NotificationObservation() { end(); }

void NotificationObservation::end() {
  if (const auto place = std::exchange(place_, nullptr)) {
    if (const auto observers = place->observers.lock()) {
      observers->remove(place->name, place->id);
    }
  }
}

void NotificationObservation::keep() { place_ = nullptr; }

NotificationCenter::NotificationCenter() : observers_(std::make_shared<Observers>()) {}

NotificationCenter::~NotificationCenter() = default;

NotificationObservation NotificationCenter::addObserver(const std::string& name, Handler handler) {
  const std::uint64_t id = ++observers_->lastId;
  // Made first: an observer without one could not be removed.
  auto place = std::make_unique<NotificationObservation::Place>(
      NotificationObservation::Place{observers_, name, id});
  observers_->byName[name].list.push_back({id, std::move(handler)});
  return NotificationObservation(std::move(place));
}

std::size_t NotificationCenter::countObservers() const {
  std::size_t count = 0;
  for (const auto& [name, observers] : observers_->byName) {
    count += static_cast<std::size_t>(
        std::ranges::count(observers.list, false, &Observers::Observer::removed));
  }
  return count;
}

void NotificationCenter::post(const Notification& notification) {
  const auto entry = observers_->byName.find(notification.name());
  if (entry == observers_->byName.end()) {
    return;
  }
  // Handlers may add and remove observers: neither moves what this loop refers to. They may also
  // end the center.
  const auto kept = observers_;
  auto& observers = entry->second;
  const std::size_t count = observers.list.size();
  ++observers.deliveries;
  for (std::size_t i = 0; i < count; ++i) {
    const auto& observer = observers.list[i];
    if (!observer.removed) {
      callGuarded([&] { observer.handler(notification); });
    }
  }
  if (--observers.deliveries == 0 && observers.hasRemoved) {
    callGuarded([&observers] { observers.sweep(); });  // else the next delivery does it
  }
}

}  // namespace qorix
