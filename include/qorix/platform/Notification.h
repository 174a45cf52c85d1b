#pragma once

// Platform: values and ports.

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <qorix/Export.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/Value.h>

namespace qorix {

/// Something that happened: a name, the object that it happened to, and details. Immutable.
class QORIX_EXPORT Notification : public Object {
 public:
  /// A notification that nobody has posted yet; see NotificationCenter::post.
  Notification(std::string name, std::shared_ptr<Object> object,
               std::optional<Dictionary> userInfo = std::nullopt)
      : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}

  /// Which notification it is; observers ask for it by this name.
  const std::string& name() const { return name_; }
  /// The sender; may be null.
  const std::shared_ptr<Object>& object() const { return object_; }
  /// The details. Absent when the notification was posted without any.
  const std::optional<Dictionary>& userInfo() const { return userInfo_; }

 private:
  std::string name_;
  std::shared_ptr<Object> object_;
  std::optional<Dictionary> userInfo_;
};

}  // namespace qorix
