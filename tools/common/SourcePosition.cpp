#include "tools/common/SourcePosition.h"

#include <algorithm>

namespace qorix::tools {

namespace {

constexpr std::size_t kCountedPiece = 1024;  // bytes that are counted once
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Bytes that continue a character do not count.
bool beginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

std::size_t charactersIn(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, beginsCharacter));
}

}  // namespace

SourceLines::SourceLines(std::string_view text) : text_(text) {
  starts_.push_back(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
  for (std::size_t end = text.find_first_of("\r\n"); end != text.npos;
       end = text.find_first_of("\r\n", end)) {
    end += text.substr(end, 2) == "\r\n" ? 2 : 1;
    starts_.push_back(end);
  }
  counts_.push_back(0);
  for (std::size_t begin = 0; begin + kCountedPiece <= text.size(); begin += kCountedPiece) {
    counts_.push_back(counts_.back() + charactersIn(text.substr(begin, kCountedPiece)));
  }
}

std::size_t SourceLines::charactersBefore(std::size_t offset) const {
  const std::size_t piece = offset / kCountedPiece;
  return counts_[piece] + charactersIn(text_.substr(piece * kCountedPiece, offset % kCountedPiece));
}

SourcePosition SourceLines::positionOf(std::size_t offset) const {
  offset = std::clamp(offset, starts_.front(), std::max(starts_.front(), text_.size()));
  const auto next = std::ranges::upper_bound(starts_, offset);
  const std::size_t start = *std::prev(next);
  return {static_cast<std::size_t>(next - starts_.begin()),
          charactersBefore(offset) - charactersBefore(start) + 1};
}

}  // namespace qorix::tools
