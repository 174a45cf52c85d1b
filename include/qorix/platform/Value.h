#pragma once

// Platform: values and ports.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <qorix/Export.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Url.h>

namespace qorix {

class Value;
/// Values in an order.
using Array = std::vector<Value>;
/// Values under names.
using Dictionary = std::map<std::string, Value>;

/// One value of a loosely typed dictionary: a notification's user info, the action information of a
/// navigation, the members of a JSON object. Readers ask for the type that they need and get
/// none when the value is of another type.
class QORIX_EXPORT Value {
 public:
  /// Null.
  Value() = default;

  /// @{
  /// A value of the argument's type. Integers become 64 bits wide; an object is shared, not copied,
  /// and one that is const can be read as const only.
  template <std::same_as<bool> Flag>  // else every pointer would be true
  Value(Flag value) : content_(value) {}
  Value(std::int64_t value) : content_(value) {}
  Value(int value) : content_(static_cast<std::int64_t>(value)) {}
  Value(double value) : content_(value) {}
  Value(std::string value) : content_(std::move(value)) {}
  Value(const char* value) : content_(std::string(value)) {}
  Value(std::nullptr_t) = delete;
  Value(Url value) : content_(std::move(value)) {}
  Value(Array value) : content_(std::move(value)) {}
  Value(Dictionary value) : content_(std::move(value)) {}
  template <class T>
  Value(std::shared_ptr<T> object)
      : content_(std::shared_ptr<std::conditional_t<std::is_const_v<T>, const Object, Object>>(
            std::move(object))) {}
  /// @}

  /// Whether there is no value at all; a null pointer to an object is one.
  bool isNull() const { return std::holds_alternative<std::monostate>(content_); }

  /// True for integers, fractions and booleans alike.
  bool isNumber() const;

  /// The number truncated toward zero; a boolean is 1 or 0; beyond 64 bits the nearest bound (NaN
  /// is 0). Absent when the value is not a number.
  std::optional<std::int64_t> integerValue() const;

  /// Whether the number differs from 0. Absent when the value is not a number.
  std::optional<bool> booleanValue() const;

  /// The value as text for people: a text as it is, a number in decimal (a boolean as 1 or 0), a
  /// URL as spelled, "(null)", and the mere kind of anything else.
  std::string description() const;

  /// The value as the alternative `T` (std::string, Url, Array, Dictionary, ...) or null.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&content_);
  }

  /// The object when it is a `T`, else null. One that was handed over as const is read as const
  /// only.
  template <class T>
  std::shared_ptr<T> object() const {
    if constexpr (std::is_const_v<T>) {
      if (const auto* constant = as<std::shared_ptr<const Object>>()) {
        return std::dynamic_pointer_cast<T>(*constant);
      }
    }
    const auto* held = as<std::shared_ptr<Object>>();
    return held == nullptr ? nullptr : std::dynamic_pointer_cast<T>(*held);
  }

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, Url, Array, Dictionary,
               std::shared_ptr<Object>, std::shared_ptr<const Object>>
      content_;
};

/// The value under `key`, or null when there is none.
QORIX_EXPORT const Value* find(const Dictionary& dictionary, const std::string& key);

}  // namespace qorix
