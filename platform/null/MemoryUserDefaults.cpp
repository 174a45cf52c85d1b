#include <qorix/platform/MemoryUserDefaults.h>

namespace qorix {

namespace {

template <class T, class Values>
const T* valueOfType(const Values& values, const std::string& key) {
  const auto entry = values.find(key);
  return entry == values.end() ? nullptr : std::get_if<T>(&entry->second);
}

}  // namespace

std::optional<std::string> MemoryUserDefaults::stringForKey(const std::string& key) {
  const auto* text = valueOfType<std::string>(values_, key);
  return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<std::vector<std::string>> MemoryUserDefaults::stringArrayForKey(
    const std::string& key) {
  const auto* list = valueOfType<std::vector<std::string>>(values_, key);
  return list == nullptr ? std::nullopt : std::optional(*list);
}

std::int64_t MemoryUserDefaults::integerForKey(const std::string& key) {
  const auto* integer = valueOfType<std::int64_t>(values_, key);
  return integer == nullptr ? 0 : *integer;
}

void MemoryUserDefaults::setString(const std::string& value, const std::string& key) {
  values_.insert_or_assign(key, value);
}

void MemoryUserDefaults::setStringArray(const std::vector<std::string>& value,
                                        const std::string& key) {
  values_.insert_or_assign(key, value);
}

void MemoryUserDefaults::setInteger(std::int64_t value, const std::string& key) {
  values_.insert_or_assign(key, value);
}

void MemoryUserDefaults::removeObjectForKey(const std::string& key) { values_.erase(key); }

}  // namespace qorix
