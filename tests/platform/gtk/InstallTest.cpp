#include <gmock/gmock.h>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

class InstallTest : public GtkTest {};

}  // namespace

TEST_F(InstallTest, aSecondInstallationIsRefusedAndWhatWaitsRuns) {
  const auto loop = platform().mainRunLoop;
  const auto bundle = platform().mainBundle;
  bool ran = false;
  loop->performAfterDelay(0, [&] { ran = true; });
  gtk::install({.bundleIdentifier = "com.example.other"});
  EXPECT_EQ(platform().mainRunLoop, loop);
  EXPECT_EQ(platform().mainBundle, bundle);
  EXPECT_THAT(log->lines(),
              testing::ElementsAre("ZAM QORIX is installed already: the second installation is "
                                   "refused."));
  EXPECT_TRUE(waitFor([&] { return ran; }));
}

}  // namespace qorix::test
