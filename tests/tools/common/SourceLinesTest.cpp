#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tools/common/SourcePosition.h"

namespace qorix::tools {
namespace {

TEST(SourceLinesTest, linesEndInEachWay) {
  const SourceLines lines("a\nb\r\nc\rd");
  EXPECT_EQ(lines.positionOf(0), (SourcePosition{1, 1}));
  EXPECT_EQ(lines.positionOf(1), (SourcePosition{1, 2}));
  EXPECT_EQ(lines.positionOf(2), (SourcePosition{2, 1}));
  EXPECT_EQ(lines.positionOf(5), (SourcePosition{3, 1}));
  EXPECT_EQ(lines.positionOf(7), (SourcePosition{4, 1}));
  EXPECT_EQ(lines.positionOf(8), (SourcePosition{4, 2}));
  EXPECT_EQ(lines.positionOf(99), (SourcePosition{4, 2}));
}

TEST(SourceLinesTest, columnsCountCharacters) {
  const SourceLines lines("\xC3\xA9\xE8\xAF\x95\xF0\x9D\x84\x9Ex\n\xC3\xA9y");
  EXPECT_EQ(lines.positionOf(9), (SourcePosition{1, 4}));
  EXPECT_EQ(lines.positionOf(13), (SourcePosition{2, 2}));
}

TEST(SourceLinesTest, aByteOrderMarkIsNoCharacter) {
  const SourceLines lines("\xEF\xBB\xBF<r>\n<a>");
  EXPECT_EQ(lines.positionOf(0), (SourcePosition{1, 1}));
  EXPECT_EQ(lines.positionOf(3), (SourcePosition{1, 1}));
  EXPECT_EQ(lines.positionOf(4), (SourcePosition{1, 2}));
  EXPECT_EQ(lines.positionOf(7), (SourcePosition{2, 1}));
  EXPECT_EQ(SourceLines("\xEF\xBB\xBF").positionOf(0), (SourcePosition{1, 1}));
  EXPECT_EQ(SourceLines("").positionOf(0), (SourcePosition{1, 1}));
}

TEST(SourceLinesTest, longLinesAreCountedInPieces) {
  constexpr std::size_t kLetters = 200'000;
  std::string text = "x\n";
  for (std::size_t index = 0; index < kLetters; ++index) {
    text += "\xC3\xA9";
  }
  const SourceLines lines(text);
  for (std::size_t index = 0; index < kLetters; ++index) {
    ASSERT_EQ(lines.positionOf(2 + 2 * index), (SourcePosition{2, index + 1}));
  }
  EXPECT_EQ(lines.positionOf(text.size()), (SourcePosition{2, kLetters + 1}));
}

}  // namespace
}  // namespace qorix::tools
