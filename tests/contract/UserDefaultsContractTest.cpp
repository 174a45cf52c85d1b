#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <ostream>

#include <qorix/platform/MemoryUserDefaults.h>

#include "platform/linux/SqliteUserDefaults.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

struct StoreImplementation {
  const char* name;
  std::function<std::unique_ptr<UserDefaults>(const TemporaryFolder&)> make;

  friend void PrintTo(const StoreImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

/// What every store of settings does.
class UserDefaultsContractTest : public ::testing::TestWithParam<StoreImplementation> {
 protected:
  UserDefaultsContractTest() : store_(GetParam().make(folder_)) {}

  TemporaryFolder folder_;
  std::unique_ptr<UserDefaults> store_;
};

TEST_P(UserDefaultsContractTest, aNewStoreIsEmpty) {
  EXPECT_EQ(store_->stringForKey("key"), std::nullopt);
  EXPECT_EQ(store_->stringArrayForKey("key"), std::nullopt);
  EXPECT_EQ(store_->integerForKey("key"), 0);
}

TEST_P(UserDefaultsContractTest, valuesAreReadBackBeforeAndAfterSynchronize) {
  store_->setString("1a4", "version");
  store_->setInteger(3, "count");
  store_->setStringArray({"pt-BR", "en"}, "languages");
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT(store_->stringForKey("version"), Optional(std::string("1a4")));
    EXPECT_EQ(store_->integerForKey("count"), 3);
    EXPECT_THAT(store_->stringArrayForKey("languages"), Optional(ElementsAre("pt-BR", "en")));
    EXPECT_TRUE(store_->synchronize());
  }
}

TEST_P(UserDefaultsContractTest, theLastValueWins) {
  store_->setString("old", "key");
  store_->synchronize();
  store_->setString("new", "key");
  EXPECT_THAT(store_->stringForKey("key"), Optional(std::string("new")));
  store_->setInteger(7, "key");
  EXPECT_EQ(store_->stringForKey("key"), std::nullopt);
  EXPECT_EQ(store_->integerForKey("key"), 7);
  store_->synchronize();
  EXPECT_EQ(store_->stringForKey("key"), std::nullopt);
  EXPECT_EQ(store_->integerForKey("key"), 7);
}

TEST_P(UserDefaultsContractTest, aValueOfAnotherTypeIsNothing) {
  store_->setString("12", "text");
  store_->setInteger(12, "integer");
  store_->setStringArray({"12"}, "list");
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(store_->integerForKey("text"), 0);
    EXPECT_EQ(store_->integerForKey("list"), 0);
    EXPECT_EQ(store_->stringForKey("integer"), std::nullopt);
    EXPECT_EQ(store_->stringForKey("list"), std::nullopt);
    EXPECT_EQ(store_->stringArrayForKey("text"), std::nullopt);
    EXPECT_EQ(store_->stringArrayForKey("integer"), std::nullopt);
    store_->synchronize();
  }
}

TEST_P(UserDefaultsContractTest, removedValuesAreGone) {
  store_->setString("text", "key");
  store_->removeObjectForKey("key");
  EXPECT_EQ(store_->stringForKey("key"), std::nullopt);
  store_->setString("text", "key");
  store_->synchronize();
  store_->removeObjectForKey("key");
  EXPECT_EQ(store_->stringForKey("key"), std::nullopt);
  EXPECT_TRUE(store_->synchronize());
  EXPECT_EQ(store_->stringForKey("key"), std::nullopt);
  store_->removeObjectForKey("never set");
  EXPECT_TRUE(store_->synchronize());
}

TEST_P(UserDefaultsContractTest, emptyValuesAreValues) {
  store_->setString("", "text");
  store_->setStringArray({}, "list");
  store_->setStringArray({"", ""}, "list of nothing");
  store_->setString("value", "");
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT(store_->stringForKey("text"), Optional(std::string()));
    EXPECT_THAT(store_->stringArrayForKey("list"), Optional(ElementsAre()));
    EXPECT_THAT(store_->stringArrayForKey("list of nothing"), Optional(ElementsAre("", "")));
    EXPECT_THAT(store_->stringForKey(""), Optional(std::string("value")));
    store_->synchronize();
  }
}

TEST_P(UserDefaultsContractTest, textsAndKeysHoldAnyBytes) {
  const std::string bytes("\0,3:\xFF\xC3 \n", 8);
  store_->setString(bytes, "text");
  store_->setStringArray({bytes, "3:abc,"}, "list");
  store_->setInteger(1, bytes);
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT(store_->stringForKey("text"), Optional(bytes));
    EXPECT_THAT(store_->stringArrayForKey("list"), Optional(ElementsAre(bytes, "3:abc,")));
    EXPECT_EQ(store_->integerForKey(bytes), 1);
    EXPECT_EQ(store_->integerForKey(std::string("\0,3", 3)), 0);
    store_->synchronize();
  }
}

TEST_P(UserDefaultsContractTest, integersHave64Bits) {
  const auto least = std::numeric_limits<std::int64_t>::min();
  const auto most = std::numeric_limits<std::int64_t>::max();
  store_->setInteger(least, "least");
  store_->setInteger(most, "most");
  store_->synchronize();
  EXPECT_EQ(store_->integerForKey("least"), least);
  EXPECT_EQ(store_->integerForKey("most"), most);
}

TEST_P(UserDefaultsContractTest, keysAreToldApartByCase) {
  store_->setInteger(1, "Key");
  store_->setInteger(2, "key");
  store_->synchronize();
  EXPECT_EQ(store_->integerForKey("Key"), 1);
  EXPECT_EQ(store_->integerForKey("key"), 2);
}

TEST_P(UserDefaultsContractTest, storedLanguagesAreRead) {
  store_->setStringArray({"sr-Latn-RS", "de"}, kAppleLanguagesKey);
  store_->synchronize();
  EXPECT_THAT(store_->stringArrayForKey(kAppleLanguagesKey),
              Optional(ElementsAre("sr-Latn-RS", "de")));
}

INSTANTIATE_TEST_SUITE_P(
    , UserDefaultsContractTest,
    ::testing::Values(StoreImplementation{"Sqlite",
                                          [](const TemporaryFolder& folder) {
                                            return std::make_unique<SqliteUserDefaults>(
                                                folder / "settings.sqlite");
                                          }},
                      StoreImplementation{"Memory",
                                          [](const TemporaryFolder&) {
                                            return std::make_unique<MemoryUserDefaults>();
                                          }}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace qorix
