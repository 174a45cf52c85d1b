#pragma once

// Platform: values and ports.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <qorix/Export.h>

namespace qorix {

/// The user's ordered list of preferred languages, BCP 47 tags ("pt-BR"), most preferred first.
inline constexpr const char* kAppleLanguagesKey = "AppleLanguages";

/// The host application's settings: a persistent key-value store. Main thread only.
///
/// A value set is seen by every later read at once; it is durable (survives a killed process and a
/// lost power supply) when the `synchronize` after it has returned true. All values set since the
/// last `synchronize` become durable together or not at all. What others have made durable is seen
/// by every later read. A store that cannot write keeps its values for the life of the process, so
/// callers need no failure path of their own. A store that could not be read yet returns no values,
/// and what is set then gives way to what the store turns out to hold.
class QORIX_EXPORT UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// The text under `key`. Absent when there is none or it is not a text.
  virtual std::optional<std::string> stringForKey(const std::string& key) = 0;

  /// The list of texts under `key`. Absent when there is none or it is not a list.
  virtual std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) = 0;

  /// The integer under `key`. 0 when there is none or it is not an integer.
  virtual std::int64_t integerForKey(const std::string& key) = 0;

  /// @{
  /// Set the value under `key`, in place of whatever is there.
  virtual void setString(const std::string& value, const std::string& key) = 0;
  virtual void setStringArray(const std::vector<std::string>& value, const std::string& key) = 0;
  virtual void setInteger(std::int64_t value, const std::string& key) = 0;
  /// @}

  /// Removes whatever is under `key`, if there is anything.
  virtual void removeObjectForKey(const std::string& key) = 0;

  /// Makes every change since the last call durable with one commit; no commit when there is none.
  /// Returns true when all are durable. False when they are not, and stay pending until the next
  /// call tries again, or when a value has given way.
  virtual bool synchronize() = 0;

  /// From here to `endDecision`, reads rest on one look at the store, and so does what is set:
  /// @{
  /// values that belong together are read together. A store that several processes share lets none
  /// of them write meanwhile, as far as that takes no long wait. After a `synchronize` inside of a
  /// decision, reads rest on a new look. Decisions may be nested.
  virtual void beginDecision() {}
  virtual void endDecision() {}
  /// @}
};

}  // namespace qorix
