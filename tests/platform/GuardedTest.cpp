#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

#include "fakes/FakePlatform.h"
#include "platform/Guarded.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

int doubled(int number) {
  if (number < 0) {
    throw std::invalid_argument("below zero");
  }
  return 2 * number;
}

void throwNumber(int* calls) {
  ++*calls;
  throw *calls;
}

class LogWithoutMemory : public Log {
 public:
  void write(std::string_view /*message*/) override { throw std::bad_alloc(); }
};

class GuardedTest : public ::testing::Test {
 protected:
  GuardedTest() { installPlatform(fake_.services()); }

  FakePlatform fake_;
};

TEST_F(GuardedTest, passesOnWhatTheFunctionAnswers) {
  EXPECT_EQ(guarded<doubled>(21), 42);
  EXPECT_THAT(fake_.log->lines(), IsEmpty());
}

TEST_F(GuardedTest, stopsAnExceptionAndAnswersTheFallback) {
  EXPECT_EQ(guarded<doubled>(-1), 0);
  EXPECT_EQ((guarded<doubled, 7>(-1)), 7);
  EXPECT_THAT(fake_.log->lines(), ElementsAre("ZAM An exception was stopped: below zero",
                                              "ZAM An exception was stopped: below zero"));
}

TEST_F(GuardedTest, stopsWhateverIsThrown) {
  int calls = 0;
  guarded<throwNumber>(&calls);
  callGuarded([&calls] { throwNumber(&calls); });
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(fake_.log->lines(), ElementsAre("ZAM An exception was stopped: of an unknown kind",
                                              "ZAM An exception was stopped: of an unknown kind"));
}

TEST_F(GuardedTest, needsNoMemory) {
  Platform services = fake_.services();
  services.log = std::make_shared<LogWithoutMemory>();
  installPlatform(services);
  EXPECT_EQ(guarded<doubled>(-1), 0);
}

}  // namespace
}  // namespace qorix
