#include <gtest/gtest.h>

#include <cstdlib>

#include "support/Screen.h"

// Every run starts its own display. Listing the tests needs none.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (testing::GTEST_FLAG(list_tests)) {
    return RUN_ALL_TESTS();
  }
  if (!qorix::test::startScreen()) {
    return EXIT_FAILURE;
  }
  const int result = RUN_ALL_TESTS();
  qorix::test::endScreen();
  return result;
}
