#pragma once

namespace qorix {

/// The common base of everything that can send a notification or be a value in its user info:
/// views, windows, bundles, ad records, view controllers. Objects are compared by identity.
class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;
};

}  // namespace qorix
