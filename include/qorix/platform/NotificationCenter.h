#pragma once

// Platform: values and ports.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/Notification.h>

namespace qorix {

/// An observer's place in a notification center: the observer hears until this ends. Move-only; a
/// moved-from one, and one made without a center, observes no one. Main thread only; may outlive
/// its center.
class QORIX_EXPORT [[nodiscard]] NotificationObservation {
 public:
  NotificationObservation() noexcept;
  /// @{
  /// Takes over the observation of `other`; one that this object had ends.
  NotificationObservation(NotificationObservation&& other) noexcept;
  NotificationObservation& operator=(NotificationObservation&& other) noexcept;
  /// @}
  NotificationObservation(const NotificationObservation&) = delete;
  NotificationObservation& operator=(const NotificationObservation&) = delete;
  ~NotificationObservation();

  /// Ends it now: the handler is not called again, not even by a delivery that is under way. Does
  /// nothing the second time.
  void end();

  /// Lets the observer hear as long as its center lives, whatever becomes of this object.
  void keep();

 private:
  friend class NotificationCenter;
  struct Place;
  explicit NotificationObservation(std::unique_ptr<Place> place);

  std::unique_ptr<Place> place_;
};

/// Delivers notifications to their observers. Main thread only.
class QORIX_EXPORT NotificationCenter {
 public:
  /// What an observer does with a notification, which is valid during the call.
  using Handler = std::function<void(const Notification&)>;

  NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;
  ~NotificationCenter();

  /// Calls `handler` for each later notification of that name, from any sender, until the returned
  /// observation ends. What the handler throws is logged; the others are called all the same.
  NotificationObservation addObserver(const std::string& name, Handler handler);

  /// Calls the handlers for the notification's name, in the order in which they were added, before
  /// it returns. Handlers added meanwhile hear the next notification only.
  void post(const Notification& notification);

  /// How many observations there are, of all names.
  std::size_t countObservers() const;

 private:
  friend class NotificationObservation;
  struct Observers;

  std::shared_ptr<Observers> observers_;
};

}  // namespace qorix
