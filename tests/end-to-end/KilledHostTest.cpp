#include <random>

#include "support/Rounds.h"
#include "support/SampleHostTest.h"

namespace qorix::test {
namespace {

using ::testing::IsEmpty;
using ::testing::PrintToString;

class KilledHostTest : public SampleHostTest {};

// A showing is counted durably before it is shown, and once: whenever the host is killed, the count
// is what it was or one more, and one more for certain when the showing was announced.
TEST_F(KilledHostTest, aKilledHostLosesNoCountAndCountsNoShowingTwice) {
  const int many = rounds(24, 1'000);
  const BareScreen screen;
  ASSERT_TRUE(screen.isUp());
  serve({.count = "100000"});
  ASSERT_TRUE(isShownInOneLaunch());
  // A third of the kills come at any moment of a launch, a third in the short time in which the
  // showing is decided, counted and begun, and a third as soon as it is announced.
  std::mt19937 random(20261121);
  std::uniform_real_distribution<double> moment(0, 1);
  std::int64_t count = storedCount();
  ASSERT_EQ(count, 1);
  int counted = 0;
  int announced = 0;
  for (int round = 0; round < many; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    HostProcess host(arguments());
    if (round % 3 == 0) {
      host.listen(0.6 * moment(random));
    } else if (round % 3 == 1) {
      ASSERT_TRUE(host.waitForEvent("ready")) << PrintToString(host.log());
      host.listen(0.05 * moment(random) * moment(random));
    } else {
      ASSERT_TRUE(host.waitForEvent(kWillShow)) << PrintToString(host.log());
    }
    host.sendSignal(SIGKILL);
    ASSERT_TRUE(host.waitForEnd());
    ASSERT_TRUE(WIFSIGNALED(host.status())) << PrintToString(host.log());
    const std::int64_t before = count;
    count = storedCount();
    const bool wasAnnounced = host.countEvents(kWillShow) > 0;
    ASSERT_GE(count, before + (wasAnnounced ? 1 : 0));
    ASSERT_LE(count, before + 1);
    ASSERT_THAT(log_->lines(), IsEmpty()) << "the settings must open";
    ASSERT_EQ(host.countLog("settings"), 0) << PrintToString(host.log());
    counted += count > before ? 1 : 0;
    announced += wasAnnounced ? 1 : 0;
  }
  std::printf("%d rounds: %d counted, %d announced\n", many, counted, announced);
  EXPECT_GT(counted, 0) << "some rounds must get as far as the decision";
  EXPECT_LT(counted, many) << "some rounds must be killed before it";
}

}  // namespace
}  // namespace qorix::test
