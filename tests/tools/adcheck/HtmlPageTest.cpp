#include <gtest/gtest.h>

#include <memory_resource>
#include <new>
#include <string>

#include "support/Repeated.h"
#include "tools/adcheck/scan/HtmlPage.h"

namespace qorix::tools::adcheck {
namespace {

/// Gives that many pieces of memory and then no more.
class ScarceMemory : public std::pmr::memory_resource {
 public:
  explicit ScarceMemory(int pieces) : pieces_(pieces) {}

 private:
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    if (pieces_-- == 0) {
      throw std::bad_alloc();
    }
    return std::pmr::new_delete_resource()->allocate(size, alignment);
  }
  void do_deallocate(void* piece, std::size_t size, std::size_t alignment) override {
    std::pmr::new_delete_resource()->deallocate(piece, size, alignment);
  }
  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  int pieces_;
};

int elementsOf(const HtmlPage& page) {
  int count = 0;
  page.visit([&](const HtmlElement& /*element*/, const auto& /*link*/) { ++count; });
  return count;
}

TEST(HtmlPageTest, withoutMemoryThePageSeemsToBeEmpty) {
  const std::string text = repeated("<p class=a><b>x</b>", 1000) + "<script></script>";
  int pieces = 0;
  for (bool isRead = false; !isRead; ++pieces) {
    ScarceMemory memory(pieces);
    const HtmlPage page(text, &memory);
    isRead = !page.isTooLarge();
    EXPECT_EQ(elementsOf(page), isRead ? 3 + 2001 : 0);
    EXPECT_EQ(page.holdsScript(), isRead);
  }
  EXPECT_GT(pieces, 5);
}

TEST(HtmlPageTest, aPageOfManyTagsIsRead) {
  const std::string text = repeated("<p><a href=x>x</a></p>", 2000);
  EXPECT_EQ(elementsOf(HtmlPage(text)), 3 + 4000);
}

TEST(HtmlPageTest, aPageOfTooManyTagsSeemsToBeEmpty) {
  // Some take the parser a time that grows with the square of their number.
  for (const char* tags : {"<svg></g>", "<div>", "<a><div>", "</p>"}) {
    const std::string text = repeated(tags, 100'000);
    const HtmlPage page(text);
    EXPECT_TRUE(page.isTooLarge()) << tags;
    EXPECT_EQ(elementsOf(page), 0) << tags;
  }
}

}  // namespace
}  // namespace qorix::tools::adcheck
