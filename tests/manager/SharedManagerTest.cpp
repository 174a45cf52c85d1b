#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <thread>
#include <type_traits>
#include <vector>

#include "manager/ManagerTest.h"

namespace qorix {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

/// Runs `work` on eight threads at once.
void race(const std::function<void(std::size_t)>& work) {
  std::latch start(8);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
}

/// A log that asks for the shared manager on another thread, and waits for the result.
struct AskingLog : RecordingLog {
  void write(std::string_view message) override {
    RecordingLog::write(message);
    if (!hasAsked.exchange(true)) {
      answer =
          std::async(std::launch::async, [] { return MyPushAdManager::sharedPushAdManager(); });
      isAnswered = answer.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    }
  }

  std::atomic<bool> hasAsked = false;
  bool isAnswered = false;
  std::future<std::shared_ptr<MyPushAdManager>> answer;
};

class SharedManagerTest : public ManagerTest {};

TEST_F(SharedManagerTest, everyCallAnswersTheSharedManager) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), shared);
  EXPECT_EQ(shared->copy(), shared);
  EXPECT_FALSE(shared->isDownloadFileRequested());
  EXPECT_EQ(shared->pushAdSource(), nullptr);
  EXPECT_EQ(shared->lonePushAdInfo(), nullptr);
  EXPECT_EQ(shared->appBundleIdentifier(), std::nullopt);
  EXPECT_THAT(*shared->pushAdOperators(), IsEmpty());
  EXPECT_EQ(shared->stubMemoryHostWindow(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(SharedManagerTest, aSecondAllocationIsRefusedAndLogged) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  EXPECT_EQ(MyPushAdManager::alloc(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kAllocMessage));
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), shared);
}

TEST_F(SharedManagerTest, anAllocationOfTheHostsOwnLeavesNoSharedManager) {
  const auto own = MyPushAdManager::alloc();
  EXPECT_NE(own, nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kAllocMessage, kAllocMessage));
}

TEST_F(SharedManagerTest, theSharedManagerIsOfTheReceivingClass) {
  struct Special : MyPushAdManager {
    using MyPushAdManager::MyPushAdManager;
  };
  const auto shared = MyPushAdManager::sharedPushAdManager<Special>();
  EXPECT_NE(std::dynamic_pointer_cast<Special>(shared), nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), shared);
}

TEST_F(SharedManagerTest, noneIsMadeWithoutTheFactory) {
  struct Implicit : MyPushAdManager {};
  struct Special : MyPushAdManager {
    using MyPushAdManager::MyPushAdManager;
  };
  EXPECT_FALSE(std::is_default_constructible_v<MyPushAdManager>);
  EXPECT_FALSE(std::is_copy_constructible_v<MyPushAdManager>);
  EXPECT_FALSE(std::is_default_constructible_v<Implicit>);
  EXPECT_FALSE(std::is_default_constructible_v<Special>);
  EXPECT_FALSE(std::is_default_constructible_v<FactoryKey<MyPushAdManager>>);
}

TEST_F(SharedManagerTest, everyAttemptAtASecondOneIsLogged) {
  struct Special : MyPushAdManager {
    using MyPushAdManager::MyPushAdManager;
  };
  const auto own = MyPushAdManager::alloc<Special>();
  EXPECT_NE(own, nullptr);
  EXPECT_EQ(own->copy(), own);
  EXPECT_EQ(MyPushAdManager::alloc<Special>(), nullptr);
  EXPECT_EQ(MyPushAdManager::alloc(), nullptr);
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager<Special>(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre(kAllocMessage, kAllocMessage, kAllocMessage));
}

TEST_F(SharedManagerTest, aConstructorThatUsesTheManagerBeforeItIsSharedHarmsNobody) {
  struct Eager : MyPushAdManager {
    explicit Eager(const FactoryKey<MyPushAdManager>& key) : MyPushAdManager(key) {
      EXPECT_EQ(sharedPushAdManager(), nullptr);
      EXPECT_EQ(copy(), nullptr);
      prepareAndShowAdWithHostView(std::make_shared<FakeView>(), MyPushAdFileHostModeWebServer,
                                   kAddress);
    }
  };
  EXPECT_NE(MyPushAdManager::sharedPushAdManager<Eager>(), nullptr);
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre(kAllocMessage, kNoBundleMessage, prepareCheck(194, kVerifyFailedMessage)))
      << "nobody hears the download";
  EXPECT_THAT(session().startedUrls, ElementsAre(kAddress));
}

TEST_F(SharedManagerTest, threadsThatRaceForTheSharedManagerGetTheSame) {
  std::vector<std::shared_ptr<MyPushAdManager>> seen(8);
  race([&](std::size_t i) { seen[i] = MyPushAdManager::sharedPushAdManager(); });
  EXPECT_THAT(seen, Each(seen.front()));
  EXPECT_NE(seen.front(), nullptr);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(SharedManagerTest, threadsThatRaceForAnAllocationGetOne) {
  std::vector<std::shared_ptr<MyPushAdManager>> seen(8);
  race([&](std::size_t i) { seen[i] = MyPushAdManager::alloc(); });
  EXPECT_EQ(std::count(seen.begin(), seen.end(), nullptr), 7);
  EXPECT_THAT(fakes_.log->lines(), ElementsAreArray(std::vector<std::string>(7, kAllocMessage)));
}

TEST_F(SharedManagerTest, aManagerThatIsBeingMadeIsWaitedFor) {
  static std::future<std::shared_ptr<MyPushAdManager>> seenMeanwhile;
  struct Slow : MyPushAdManager {
    explicit Slow(const FactoryKey<MyPushAdManager>& key) : MyPushAdManager(key) {
      seenMeanwhile = std::async(std::launch::async, [] { return sharedPushAdManager(); });
      EXPECT_EQ(seenMeanwhile.wait_for(std::chrono::milliseconds(200)),
                std::future_status::timeout);
    }
  };
  const auto shared = MyPushAdManager::sharedPushAdManager<Slow>();
  EXPECT_NE(shared, nullptr);
  EXPECT_EQ(seenMeanwhile.get(), shared);
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
}

TEST_F(SharedManagerTest, aRefusalIsLoggedWhenOtherThreadsCanHaveTheManager) {
  const auto log = std::make_shared<AskingLog>();
  auto services = fakes_.services();
  services.log = log;
  installPlatform(std::move(services));
  const auto shared = MyPushAdManager::sharedPushAdManager();
  EXPECT_EQ(MyPushAdManager::alloc(), nullptr);
  EXPECT_TRUE(log->isAnswered);
  EXPECT_EQ(log->answer.get(), shared);
}

TEST_F(SharedManagerTest, aMissingSharedManagerIsLoggedWhenOtherThreadsCanAskForIt) {
  const auto log = std::make_shared<AskingLog>();
  auto services = fakes_.services();
  services.log = log;
  installPlatform(std::move(services));
  const auto own = MyPushAdManager::alloc();
  EXPECT_EQ(MyPushAdManager::sharedPushAdManager(), nullptr);
  EXPECT_TRUE(log->isAnswered);
  EXPECT_EQ(log->answer.get(), nullptr);
  EXPECT_THAT(log->lines(), ElementsAre(kAllocMessage, kAllocMessage));
}

TEST_F(SharedManagerTest, theBundleIdentifierIsReadOnAnyThread) {
  const auto shared = MyPushAdManager::sharedPushAdManager();
  const std::string one = "com.example.a-host-with-a-long-name";
  const std::string other = "com.example.another-host-with-a-long-name";
  shared->setAppBundleIdentifier(one);
  std::atomic<bool> isEnded = false;
  std::thread reader([&] {
    while (!isEnded) {
      const auto seen = shared->appBundleIdentifier();
      EXPECT_TRUE(seen == one || seen == other);
    }
  });
  for (int i = 0; i < 2000; ++i) {
    shared->setAppBundleIdentifier(i % 2 == 0 ? other : one);
  }
  isEnded = true;
  reader.join();
}

}  // namespace
}  // namespace qorix
