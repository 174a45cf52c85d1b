#pragma once

// Machinery: public for those who extend it.

#include <cstdint>

#include <qorix/Export.h>
#include <qorix/platform/View.h>

namespace qorix {

/// The kind of view that the library's interface file has at its root, so that it can be found in a
/// hierarchy by its tag. Each platform's views provide the rest.
class QORIX_EXPORT MyPushAdBoxView : public View {
 public:
  /// The tag of every such view.
  static constexpr std::int64_t kTag = 27921;

  std::int64_t tag() const final { return kTag; }
};

}  // namespace qorix
