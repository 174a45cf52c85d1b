#include "platform/NotificationCenter.h"

#include <algorithm>
#include <utility>

#include "platform/Guarded.h"

namespace qorix {

NotificationCenter::Observation NotificationCenter::addObserver(const std::string& name,
                                                                Handler handler) {
  const Observation observation = ++lastObservation_;
  observers_[name].list.push_back({observation, std::move(handler)});
  return observation;
}

void NotificationCenter::removeObserver(const std::string& name, Observation observation) {
  const auto entry = observers_.find(name);
  if (entry == observers_.end()) {
    return;
  }
  auto& list = entry->second.list;
  const auto observer =
      std::lower_bound(list.begin(), list.end(), observation,
                       [](const Observer& each, Observation id) { return each.id < id; });
  if (observer == list.end() || observer->id != observation) {
    return;
  }
  if (entry->second.deliveries == 0) {
    list.erase(observer);
  } else {
    // The handler may be the one that is running: it is destroyed when the delivery has ended.
    observer->removed = true;
    entry->second.hasRemoved = true;
  }
}

std::size_t NotificationCenter::countObservers() const {
  std::size_t count = 0;
  for (const auto& [name, observers] : observers_) {
    for (const Observer& observer : observers.list) {
      count += observer.removed ? 0 : 1;
    }
  }
  return count;
}

void NotificationCenter::post(const Notification& notification) {
  const auto entry = observers_.find(notification.name());
  if (entry == observers_.end()) {
    return;
  }
  // Handlers may add and remove observers: neither moves what this loop refers to.
  auto& observers = entry->second;
  const std::size_t count = observers.list.size();
  ++observers.deliveries;
  for (std::size_t i = 0; i < count; ++i) {
    const Observer& observer = observers.list[i];
    if (!observer.removed) {
      callGuarded([&] { observer.handler(notification); });
    }
  }
  if (--observers.deliveries == 0 && observers.hasRemoved) {
    std::erase_if(observers.list, [](const Observer& each) { return each.removed; });
    observers.hasRemoved = false;
  }
}

}  // namespace qorix
