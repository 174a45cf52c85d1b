#include <functional>
#include <memory>
#include <ostream>
#include <thread>
#include <vector>

#include "fakes/FakeRunLoop.h"
#include "platform/gtk/MainContextRunLoop.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {
namespace {

struct RunLoopImplementation {
  const char* name;
  std::function<std::shared_ptr<RunLoop>()> make;
  /// Serves the loop until the condition holds; false when it never does.
  std::function<bool(RunLoop&, const std::function<bool()>&)> serveUntil;

  friend void PrintTo(const RunLoopImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

bool serveFakeUntil(RunLoop& loop, const std::function<bool()>& condition) {
  auto& fake = dynamic_cast<FakeRunLoop&>(loop);
  for (int i = 0; i < 100 && !condition(); ++i) {
    fake.waitForWork(0.05);
    fake.advance(0.05);
  }
  return condition();
}

bool serveGtkUntil(RunLoop& /*loop*/, const std::function<bool()>& condition) {
  return waitFor(condition);
}

/// What every main loop does.
class RunLoopContractTest : public testing::TestWithParam<RunLoopImplementation> {
 protected:
  bool serveUntilCount(std::size_t count) {
    return GetParam().serveUntil(*loop, [this, count] { return order.size() >= count; });
  }

  void note(int number) { order.push_back(number); }

  const std::shared_ptr<RunLoop> loop = GetParam().make();
  std::vector<int> order;
};

}  // namespace

TEST_P(RunLoopContractTest, equalDelaysKeepTheirOrderAndShorterOnesComeFirst) {
  loop->performAfterDelay(0.1, [this] { note(3); });
  loop->performAfterDelay(0.1, [this] { note(4); });
  loop->performAfterDelay(0, [this] { note(1); });
  loop->performAfterDelay(-5, [this] { note(2); });
  EXPECT_TRUE(order.empty()) << "never inside the call";
  ASSERT_TRUE(serveUntilCount(4));
  EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST_P(RunLoopContractTest, dispatchedTasksKeepTheirOrder) {
  for (int i = 0; i < 5; ++i) {
    loop->dispatchAsync([this, i] { note(i); });
  }
  EXPECT_TRUE(order.empty()) << "never inside the call";
  ASSERT_TRUE(serveUntilCount(5));
  EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4}));
}

TEST_P(RunLoopContractTest, taskDispatchedByATaskRunsAfterTheOnesBefore) {
  loop->dispatchAsync([this] {
    loop->dispatchAsync([this] { note(3); });
    note(1);
  });
  loop->dispatchAsync([this] { note(2); });
  ASSERT_TRUE(serveUntilCount(3));
  EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_P(RunLoopContractTest, dispatchedTaskWaitsForTheOneThatServesTheLoopAndAPerformDoesNot) {
  loop->dispatchAsync([this] {
    note(1);
    loop->performAfterDelay(0.05, [this] { note(2); });
    EXPECT_TRUE(serveUntilCount(2));
    note(3);
  });
  loop->dispatchAsync([this] { note(4); });
  ASSERT_TRUE(serveUntilCount(4));
  EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST_P(RunLoopContractTest, taskDispatchedByAPerformRunsWhileThatServesTheLoop) {
  loop->performAfterDelay(0, [this] {
    loop->dispatchAsync([this] { note(1); });
    loop->performAfterDelay(0, [this] { note(2); });
    EXPECT_TRUE(serveUntilCount(2));
    note(3);
  });
  ASSERT_TRUE(serveUntilCount(3));
  EXPECT_EQ(order.back(), 3);
}

TEST_P(RunLoopContractTest, taskPerformedByATaskRunsLater) {
  loop->performAfterDelay(0, [this] {
    loop->performAfterDelay(0, [this] { note(2); });
    note(1);
  });
  ASSERT_TRUE(serveUntilCount(2));
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_P(RunLoopContractTest, tasksOfOtherThreadsRunOnTheMainThread) {
  const auto mainThread = std::this_thread::get_id();
  std::thread::id seen;
  std::thread([&] {
    loop->dispatchAsync([&] {
      seen = std::this_thread::get_id();
      note(1);
    });
  }).join();
  ASSERT_TRUE(serveUntilCount(1));
  EXPECT_EQ(seen, mainThread);
}

TEST_P(RunLoopContractTest, performAndWaitRunsAtOnceOnTheMainThread) {
  loop->performAndWait([this] { note(1); });
  EXPECT_EQ(order, (std::vector{1}));
}

TEST_P(RunLoopContractTest, performAndWaitReturnsWhenTheTaskHasRun) {
  bool hadRun = false;
  std::thread waiter([&] {
    bool ran = false;
    loop->performAndWait([&] {
      ran = true;
      note(1);
    });
    hadRun = ran;
  });
  EXPECT_TRUE(serveUntilCount(1));
  waiter.join();
  EXPECT_TRUE(hadRun);
}

INSTANTIATE_TEST_SUITE_P(
    , RunLoopContractTest,
    testing::Values(RunLoopImplementation{"Fake", [] { return std::make_shared<FakeRunLoop>(); },
                                          serveFakeUntil},
                    RunLoopImplementation{
                        "Gtk", [] { return std::make_shared<gtk::MainContextRunLoop>(); },
                        serveGtkUntil}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace qorix::test
