#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <optional>
#include <string>

#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"
#include "support/Repeated.h"

namespace {

// How many allocations still succeed before the one that does not.
long allocationsBeforeFailure = -1;

}  // namespace

void* operator new(std::size_t size) {
  if (allocationsBeforeFailure >= 0 && allocationsBeforeFailure-- == 0) {
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace qorix {
namespace {

/// A document whose reading allocates in every event: in text, elements and what is open.
std::string allocatingDocument() {
  return "<!DOCTYPE r [<!ENTITY e '" + repeated("text ", 200) + "'>]><r>" +
         repeated("<element/>&e;", 50) + repeated("<x>", 40) + repeated("</x>", 40) + "</r>";
}

template <class Parse>  // takes the map and returns what it read
long countFailuresInEvents(Parse parse) {
  long failures = 0;
  for (long allocation = 0;; ++allocation) {
    XmlSourceMap map;
    allocationsBeforeFailure = allocation;
    // In one place: a document allocates when it is moved.
    const auto document = [&]() -> std::optional<XmlDocument> {
      try {
        return parse(map);
      } catch (const std::bad_alloc&) {
        ADD_FAILURE() << "thrown at allocation " << allocation;
        return std::nullopt;
      }
    }();
    const bool hasFailed = allocationsBeforeFailure == -1;
    allocationsBeforeFailure = -1;
    if (!hasFailed) {
      EXPECT_TRUE(document);
      return failures;
    }
    EXPECT_FALSE(document) << allocation;
    if (map.error() && map.error()->offset > 0) {
      EXPECT_EQ(map.error()->message, "there is not enough memory") << allocation;
      ++failures;
    }
  }
}

TEST(XmlMemoryTest, withoutMemoryForItADocumentIsNotRead) {
  const std::string source = allocatingDocument();
  countFailuresInEvents([&](XmlSourceMap&) { return XmlDocument::parse(source); });
}

TEST(XmlMemoryTest, whatAnEventLacksMemoryForEndsTheReadingInOrder) {
  const std::string source = allocatingDocument();
  EXPECT_GT(
      countFailuresInEvents([&](XmlSourceMap& map) { return XmlDocument::parse(source, map); }),
      10);
}

TEST(XmlMemoryTest, aStoppedReadingIsOver) {
  // The end of an empty element follows its beginning even then.
  std::string attributes;
  for (int index = 0; index < 1'100; ++index) {
    attributes += " a" + std::to_string(index) + " CDATA 'v'";
  }
  const std::string document = "<!DOCTYPE r [<!ATTLIST x" + attributes + ">]><r>";
  EXPECT_FALSE(XmlDocument::parse(document + repeated("<x/>", 1'000) + "</r>"));
}

}  // namespace
}  // namespace qorix
