#pragma once

// Platform: values and ports.

#include <qorix/Export.h>

namespace qorix {

/// The common base of everything that can send a notification or be a value in its user info:
/// views, windows, bundles, ad records, view controllers. Objects are compared by identity.
class QORIX_EXPORT Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;
};

}  // namespace qorix
