#pragma once

#include <functional>
#include <map>
#include <string>

namespace qorix::bench {

/// The time that the library itself takes on the main thread, in microseconds: that of the engine
/// is taken off.
class Stretches {
 public:
  /// Does the work and returns the time of it.
  double timed(const std::function<void()>& work);
  /// The same, noting it under a name.
  void note(const std::string& name, const std::function<void()>& work);
  /// What the engine does inside of a stretch.
  void leaveOut(const std::function<void()>& work);

  /// 0 if none of that name was noted.
  double longest(const std::string& name) const;
  /// Of all stretches since the last `forget`.
  double engineMicroseconds() const { return engine_; }
  void forget();

 private:
  std::map<std::string, double> longest_;
  double engine_ = 0;
};

/// From now on every task of the run loop is noted as "task", and what the web view reports as
/// "finished load" and "click", and flushed settings as "commit"; `stretches` must live on. Links
/// lead nowhere.
void installTimedServices(Stretches& stretches);

}  // namespace qorix::bench
