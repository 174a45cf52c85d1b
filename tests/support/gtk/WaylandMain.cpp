#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "support/gtk/Compositor.h"

// Every run starts its own compositor. The only test to run chooses it by its name: weston for
// "…UnderWeston", else sway, with a second output of another scale for "onTwoOutputs…". What
// "tellsTheCompositor…" sends is written to standard error.
int main(int argc, char** argv) {
  using qorix::test::Compositor;
  const bool onlyLists = std::any_of(argv, argv + argc, [](const char* argument) {
    return std::string_view(argument) == "--gtest_list_tests";
  });
  testing::InitGoogleTest(&argc, argv);
  if (onlyLists) {
    return RUN_ALL_TESTS();
  }
  const std::string name = testing::GTEST_FLAG(filter);
  const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  static const auto desktop =
      has("UnderWeston")
          ? Compositor::startWeston()
          : Compositor::startSway(has(".onTwoOutputs") ? std::vector{1, 2} : std::vector{1});
  if (desktop == nullptr) {
    return EXIT_FAILURE;
  }
  desktop->useInThisProcess();
  if (has(".tellsTheCompositor")) {
    setenv("WAYLAND_DEBUG", "client", 1);
  }
  gtk_init(&argc, &argv);
  return RUN_ALL_TESTS();
}
