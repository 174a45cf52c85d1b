#include "definition/XmlSourceMap.h"

#include <algorithm>
#include <iterator>

namespace qorix {

std::size_t XmlSourceMap::offsetOf(XmlElement element) const { return elements_[element.index_]; }

std::size_t XmlSourceMap::offsetInText(XmlElement element, std::size_t offset) const {
  const auto& place = element.document_->elements_[element.index_];
  const std::size_t length = place.textEnd - place.textBegin;
  if (length == 0) {
    return offsetOf(element);
  }
  // After the end comes what follows the last byte, not what another element begins with.
  return offset < length ? sourceOf(place.textBegin + offset) : sourceOf(place.textEnd - 1) + 1;
}

void XmlSourceMap::addText(Run run) {
  if (!runs_.empty() && run.isVerbatim == runs_.back().isVerbatim) {
    const Run& last = runs_.back();
    const std::size_t next = run.isVerbatim ? last.source + (run.text - last.text) : last.source;
    if (run.source == next) {
      return;  // more of the same
    }
  }
  runs_.push_back(run);
}

std::size_t XmlSourceMap::sourceOf(std::size_t text) const {
  const auto next = std::ranges::upper_bound(runs_, text, {}, &Run::text);
  const Run& run = *std::prev(next);
  return run.isVerbatim ? run.source + (text - run.text) : run.source;
}

}  // namespace qorix
