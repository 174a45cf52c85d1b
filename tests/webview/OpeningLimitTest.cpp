#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "webview/OpeningLimit.h"

namespace qorix {
namespace {

using Answer = OpeningLimit::Answer;
using ::testing::ElementsAre;

/// The decisions for a page that asks at those times.
std::vector<Answer> answersAt(const std::vector<double>& times) {
  OpeningLimit limit;
  std::vector<Answer> answers;
  answers.reserve(times.size());
  for (const double time : times) {
    answers.push_back(limit.ask(time));
  }
  return answers;
}

TEST(OpeningLimitTest, twoMayBeOpenedWithinASecond) {
  EXPECT_THAT(answersAt({5, 5.2, 5.9}),
              ElementsAre(Answer::open, Answer::open, Answer::refuseFirst));
  EXPECT_THAT(
      answersAt({5, 5.9, 6, 6.5, 6.9}),
      ElementsAre(Answer::open, Answer::open, Answer::open, Answer::refuseFirst, Answer::open));
}

TEST(OpeningLimitTest, whatIsRefusedDoesNotCount) {
  EXPECT_THAT(answersAt({0, 0, 0.5, 0.9, 1, 1}),
              ElementsAre(Answer::open, Answer::open, Answer::refuseFirst, Answer::refuse,
                          Answer::open, Answer::open));
}

TEST(OpeningLimitTest, fiveMayBeOpenedInThePagesLife) {
  EXPECT_THAT(answersAt({0, 10, 20, 30, 40, 50, 1e9}),
              ElementsAre(Answer::open, Answer::open, Answer::open, Answer::open, Answer::open,
                          Answer::refuseFirst, Answer::refuse));
}

TEST(OpeningLimitTest, theLimitIsReachedOnceOnly) {
  OpeningLimit limit;
  int reached = 0;
  for (int i = 0; i < 10'000; ++i) {
    reached += limit.ask(i * 0.1) == Answer::refuseFirst ? 1 : 0;
  }
  EXPECT_EQ(reached, 1);
}

TEST(OpeningLimitTest, noSchemeOpensThatHandsOverFilesOrRunsSomething) {
  for (const char* scheme :
       {"file", "FILE", "data", "javascript", "JavaScript", "vbscript", "blob", "about",
        "view-source", "filesystem", "jar", "smb", "sftp", "trash", "admin", "help", "man"}) {
    EXPECT_FALSE(mayBeOpened(scheme)) << scheme;
  }
}

TEST(OpeningLimitTest, anyOtherSchemeOpens) {
  for (const char* scheme : {"https", "http", "HTTPS", "macappstore", "mailto", "tel", "files",
                             "com.example.viewer", ""}) {
    EXPECT_TRUE(mayBeOpened(scheme)) << scheme;
  }
}

}  // namespace
}  // namespace qorix
