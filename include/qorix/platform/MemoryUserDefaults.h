#pragma once

// Platform: values and ports.

#include <map>
#include <string>
#include <variant>
#include <vector>

#include <qorix/Export.h>
#include <qorix/platform/UserDefaults.h>

namespace qorix {

/// Settings that last as long as the object: for hosts that must leave no trace.
class QORIX_EXPORT MemoryUserDefaults : public UserDefaults {
 public:
  std::optional<std::string> stringForKey(const std::string& key) override;
  std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) override;
  std::int64_t integerForKey(const std::string& key) override;
  void setString(const std::string& value, const std::string& key) override;
  void setStringArray(const std::vector<std::string>& value, const std::string& key) override;
  void setInteger(std::int64_t value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;
  bool synchronize() override { return true; }

 private:
  std::map<std::string, std::variant<std::string, std::vector<std::string>, std::int64_t>> values_;
};

}  // namespace qorix
