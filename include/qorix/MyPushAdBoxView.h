#pragma once

#include <cstdint>

#include "platform/View.h"

namespace qorix {

/// The kind of view that the library's interface file has at its root, so that it can be found in a
/// hierarchy by its tag. Each platform's views provide the rest.
class MyPushAdBoxView : public View {
 public:
  static constexpr std::int64_t kTag = 27921;

  std::int64_t tag() const final { return kTag; }
};

}  // namespace qorix
