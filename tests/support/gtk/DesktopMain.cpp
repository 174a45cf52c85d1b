#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "support/gtk/GtkTest.h"

// Every run starts its own desktop.
int main(int argc, char** argv) {
  const bool onlyLists = std::any_of(argv, argv + argc, [](const char* argument) {
    return std::string_view(argument) == "--gtest_list_tests";
  });
  testing::InitGoogleTest(&argc, argv);
  if (onlyLists) {
    return RUN_ALL_TESTS();
  }
  if (!qorix::test::startDesktop()) {
    return EXIT_FAILURE;
  }
  gtk_init(&argc, &argv);
  return RUN_ALL_TESTS();
}
