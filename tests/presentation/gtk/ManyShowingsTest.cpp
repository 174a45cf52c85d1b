// One process shows advertisements again and again, as a host may that runs for weeks.

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>

#include "support/ProcessUse.h"
#include "support/Records.h"
#include "support/Rounds.h"
#include "support/Sanitizer.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {
namespace {

class ManyShowingsTest : public GtkTest {
 protected:
  ManyShowingsTest() {
    host_.show();
    observe(kPushAdWillShowNotification, shown_);
    observe(kPushAdDidCloseNotification, closed_);
  }

  void observe(const char* name, int& count) {
    platform()
        .notificationCenter->addObserver(name, [&count](const Notification&) { ++count; })
        .keep();
  }

  void request(RecordOf values) {
    values.version = "";  // due every time
    const auto record = makeRecord(values);
    record->setHtmlContentsDict(LocalizedTexts{{"default", kRedPage}});
    const auto manager = MyPushAdManager::sharedPushAdManager();
    manager->configureWithAppBundle(platform().mainBundle);
    manager->setLonePushAdInfo(record);
    manager->prepareAndShowAdWithHostView(host_.view(), MyPushAdFileHostModeWebServer,
                                          std::nullopt);
  }

  static const MyPushAdOperator& lastPresenter() {
    return *MyPushAdManager::sharedPushAdManager()->pushAdOperators()->back();
  }

  void sample(int round) {
    uses_.push_back(ProcessUse::now());
    if (round % 50 == 0) {
      std::cout << round << ": " << uses_.back() << std::endl;
    }
  }

  /// The most of a number in a third of the samples.
  long mostIn(std::size_t third, long ProcessUse::*number) const {
    const auto size = static_cast<std::ptrdiff_t>(uses_.size() / 3);
    const auto begin = uses_.begin() + static_cast<std::ptrdiff_t>(third) * size;
    const auto most = std::max_element(begin, begin + size, [number](const auto& a, const auto& b) {
      return a.*number < b.*number;
    });
    return (*most).*number;
  }

  void expectLevel(const char* what, long ProcessUse::*number, long tolerance) const {
    EXPECT_LE(mostIn(2, number), mostIn(1, number) + tolerance) << what;
  }

  /// The last third of the showings takes no more than the second, but for what varies by itself
  /// and, in memory, what each leaves: the manager keeps all presenters, the engine a little.
  void expectLevels() const {
    constexpr long kOfShowing = 30;    // kB
    constexpr long kVarying = 12'000;  // kB
    const long growth = kOfShowing * static_cast<long>(uses_.size()) / 3 + kVarying;
    expectLevel("descriptors", &ProcessUse::descriptors, 6);
    expectLevel("threads", &ProcessUse::threads, 3);
    expectLevel("web processes", &ProcessUse::webProcesses, 1);
    expectLevel("memory", &ProcessUse::kilobytes, growth);
    std::cout << "last: " << uses_.back() << std::endl;
  }

  HostWindow host_{400, 300};
  int shown_ = 0;
  int closed_ = 0;
  std::vector<ProcessUse> uses_;
};

TEST_F(ManyShowingsTest, bannersTakeNoMoreAndMore) {
  for (int round = 0; round < rounds(15, 500); ++round) {
    const int before = shown_;
    request({.embed = 1});
    ASSERT_TRUE(waitFor([&] { return shown_ == before + 1; }));
    ASSERT_TRUE(waitFor([] { return placeOf(kRed).width == 300; }));
    lastPresenter().pushAdViewController()->handleCloseButtonClicked();
    ASSERT_TRUE(waitFor([&] { return closed_ == shown_; }));
    ASSERT_TRUE(waitFor([] { return placeOf(kRed).width == 0; }));
    sample(round);
  }
  expectLevels();
}

TEST_F(ManyShowingsTest, popupsTakeNoMoreAndMore) {
  for (int round = 0; round < rounds(9, 500); ++round) {
    const int before = shown_;
    const int closedBefore = closed_;
    request({.embed = 0});
    ASSERT_TRUE(waitFor([&] { return shown_ == before + 1; }));
    ASSERT_TRUE(waitFor([] { return placeOf(kRed).width == 300; }));
    lastPresenter().popupAdWindow()->close();
    // Every presenter of the window reports it, one in each turn of the loop.
    ASSERT_TRUE(waitFor([&] { return closed_ == closedBefore + round + 1; }));
    ASSERT_TRUE(waitFor([] { return placeOf(kRed).width == 0; }));
    sample(round);
  }
  expectLevels();
}

TEST_F(ManyShowingsTest, aThousandPresentersWithNothingToShowTakeLittle) {
  const int count = rounds(200, 1000);
  request({.enable = false});
  const long before = ProcessUse::now().kilobytes;
  for (int i = 0; i < count; ++i) {
    request({.enable = false});
  }
  serveLoop();
  sample(0);
  EXPECT_LT(uses_.back().kilobytes - before, (kIsSanitized ? 4 : 1) * (1000 + 10 * count));
  EXPECT_EQ(uses_.back().webProcesses, 0);
}

}  // namespace
}  // namespace qorix::test
