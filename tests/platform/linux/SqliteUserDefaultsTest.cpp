#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fakes/RecordingLog.h"
#include "platform/linux/SqliteUserDefaults.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

std::string contentsOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const std::string& path, const std::string& contents) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << contents;
}

fs::perms permissionsOf(const std::string& path) { return fs::status(path).permissions(); }

/// Another program at the same file.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& path) { sqlite3_open(path.c_str(), &database_); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;
  ~OtherProgram() { sqlite3_close(database_); }

  int run(const char* statement) {
    return sqlite3_exec(database_, statement, nullptr, nullptr, nullptr);
  }

 private:
  sqlite3* database_ = nullptr;
};

class SqliteUserDefaultsTest : public ::testing::Test {
 protected:
  std::unique_ptr<SqliteUserDefaults> open() {
    return std::make_unique<SqliteUserDefaults>(path_, log_);
  }

  /// A file of several pages: "text" is long, "count" is 3.
  void makeFile() {
    const auto store = open();
    store->setString(std::string(50'000, 'x'), "text");
    store->setInteger(3, "count");
    ASSERT_TRUE(store->synchronize());
  }

  /// Expects that what is set is kept, but not in the file.
  void expectMemoryOnly() {
    const auto store = open();
    store->setInteger(5, "count");
    EXPECT_FALSE(store->synchronize());
    EXPECT_EQ(store->integerForKey("count"), 5);
    EXPECT_EQ(store->stringForKey("text"), std::nullopt);
    store->setString("text", "text");
    EXPECT_FALSE(store->synchronize());
    EXPECT_THAT(store->stringForKey("text"), Optional(std::string("text")));
    EXPECT_THAT(log_->lines(), ElementsAre(AllOf(HasSubstr(path_), HasSubstr("cannot be used ("))));
  }

  /// Expects that `store` continues with a new file, and that the old one is kept.
  void expectFreshStart(UserDefaults& store, const std::string& damagedContents,
                        const std::string& keptAs) {
    EXPECT_EQ(store.integerForKey("count"), 0);
    EXPECT_EQ(store.stringForKey("text"), std::nullopt);
    EXPECT_THAT(log_->lines(), ElementsAre(AllOf(HasSubstr(path_), HasSubstr("is damaged ("),
                                                 HasSubstr("kept as " + keptAs))));
    EXPECT_TRUE(contentsOf(keptAs) == damagedContents);
    store.setInteger(8, "count");
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(open()->integerForKey("count"), 8);
    EXPECT_EQ(log_->lines().size(), 1U);
  }

  void expectFreshStartOver(const std::string& contents) {
    writeFile(path_, contents);
    const auto store = open();
    expectFreshStart(*store, contents, path_ + ".damaged-1");
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "com.example.editor.sqlite";
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
};

TEST_F(SqliteUserDefaultsTest, valuesOutliveTheProcess) {
  {
    const auto store = open();
    store->setString("1a4", "version");
    store->setInteger(-5, "count");
    store->setStringArray({"a", "", "b"}, "list");
    EXPECT_TRUE(store->synchronize());
  }
  const auto store = open();
  EXPECT_THAT(store->stringForKey("version"), Optional(std::string("1a4")));
  EXPECT_EQ(store->integerForKey("count"), -5);
  EXPECT_THAT(store->stringArrayForKey("list"), Optional(ElementsAre("a", "", "b")));
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(SqliteUserDefaultsTest, keepsLargeTextsWithAnyBytes) {
  std::string text(20'000'000, '\0');
  for (std::size_t i = 0; i < text.size(); i += 3) {
    text[i] = static_cast<char>(i % 256);
  }
  {
    const auto store = open();
    store->setString(text, "document");
    EXPECT_TRUE(store->synchronize());
  }
  EXPECT_TRUE(open()->stringForKey("document") == text);
}

TEST_F(SqliteUserDefaultsTest, theEndOfTheStoreWritesWhatIsPending) {
  open()->setInteger(7, "count");
  EXPECT_EQ(open()->integerForKey("count"), 7);
}

TEST_F(SqliteUserDefaultsTest, readsWhatOthersHaveWrittenButNotWhatTheyHavePending) {
  const auto first = open();
  const auto second = open();
  first->setInteger(1, "count");
  EXPECT_EQ(second->integerForKey("count"), 0);
  first->synchronize();
  EXPECT_EQ(second->integerForKey("count"), 1);
  second->removeObjectForKey("count");
  second->synchronize();
  EXPECT_EQ(first->integerForKey("count"), 0);
}

TEST_F(SqliteUserDefaultsTest, readsWhatAnotherProcessHasWrittenAsSoonAsItHas) {
  int requests[2];
  int reports[2];
  ASSERT_EQ(::pipe(requests), 0);
  ASSERT_EQ(::pipe(reports), 0);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::close(requests[1]);
    const auto store = open();
    char request = 0;
    while (::read(requests[0], &request, 1) == 1) {
      store->setInteger(store->integerForKey("count") + 1, "count");
      const char report = store->synchronize() ? 'y' : 'n';
      if (::write(reports[1], &report, 1) != 1) {
        break;
      }
    }
    ::_exit(0);
  }
  ::close(requests[0]);
  ::close(reports[1]);
  const auto store = open();
  for (int count = 1; count <= 40; ++count) {
    char report = 0;
    ASSERT_EQ(::write(requests[1], "?", 1), 1);
    ASSERT_EQ(::read(reports[0], &report, 1), 1);
    ASSERT_EQ(report, 'y');
    ASSERT_EQ(store->integerForKey("count"), count);
    if (count % 4 == 0) {  // commits of our own in between hide nothing
      store->setInteger(++count, "count");
      ASSERT_TRUE(store->synchronize());
    }
  }
  ::close(requests[1]);
  ::close(reports[0]);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST_F(SqliteUserDefaultsTest, readsWhatOthersHaveWrittenJustBeforeACommitOfOurOwn) {
  SettingsFile ours;
  SettingsFile theirs;
  std::optional<Settings> held;
  ASSERT_EQ(ours.open(path_, 0), SettingsFile::Result::done);
  ASSERT_EQ(theirs.open(path_, 0), SettingsFile::Result::done);
  ASSERT_EQ(ours.read(held), SettingsFile::Result::done);
  ASSERT_EQ(theirs.write({{"theirs", Setting(1)}}), SettingsFile::Result::done);
  ASSERT_EQ(ours.write({{"ours", Setting(1)}}), SettingsFile::Result::done);
  ASSERT_EQ(ours.read(held), SettingsFile::Result::done);
  EXPECT_EQ(held, (Settings{{"theirs", Setting(1)}, {"ours", Setting(1)}}));
}

TEST_F(SqliteUserDefaultsTest, aDecisionReadsWhatBelongsTogether) {
  const auto store = open();
  const auto other = open();
  store->beginDecision();
  EXPECT_EQ(store->stringForKey("version"), std::nullopt);
  other->setString("2", "version");
  other->setInteger(3, "count");
  EXPECT_FALSE(other->synchronize()) << "nobody else saves meanwhile";
  EXPECT_EQ(store->integerForKey("count"), 0);
  store->endDecision();
  EXPECT_TRUE(other->synchronize());
  EXPECT_THAT(store->stringForKey("version"), Optional(std::string("2")));
  EXPECT_EQ(store->integerForKey("count"), 3);
}

// Somebody else holds the file in the midst of a commit.
TEST_F(SqliteUserDefaultsTest, aDecisionDoesNotWaitForeverForAnother) {
  makeFile();
  const auto store = open();
  OtherProgram other(path_);
  other.run("BEGIN IMMEDIATE");
  store->beginDecision();
  EXPECT_EQ(store->integerForKey("count"), 3);
  store->setInteger(4, "count");
  EXPECT_FALSE(store->synchronize());
  store->endDecision();
  other.run("COMMIT");
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(open()->integerForKey("count"), 4);
}

TEST_F(SqliteUserDefaultsTest, filesAndFoldersAreForThisUserOnly) {
  ::umask(0);
  path_ = folder_ / "config/qorix/com.example.editor.sqlite";
  const auto store = open();
  store->setInteger(1, "count");
  ASSERT_TRUE(store->synchronize());
  const auto kFile = fs::perms::owner_read | fs::perms::owner_write;
  EXPECT_EQ(permissionsOf(folder_ / "config"), fs::perms::owner_all);
  EXPECT_EQ(permissionsOf(folder_ / "config/qorix"), fs::perms::owner_all);
  EXPECT_EQ(permissionsOf(path_), kFile);
  EXPECT_EQ(permissionsOf(path_ + "-wal"), kFile);
  EXPECT_EQ(permissionsOf(path_ + "-shm"), kFile);
}

TEST_F(SqliteUserDefaultsTest, languagesAreTheEnvironmentsUnlessAListIsStored) {
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES"}) {
    ::unsetenv(name);
  }
  ::setenv("LANG", "pt_BR.UTF-8", 1);
  const auto store = open();
  EXPECT_THAT(store->stringArrayForKey(kAppleLanguagesKey), Optional(ElementsAre("pt-BR")));
  EXPECT_EQ(store->stringArrayForKey("OtherLanguages"), std::nullopt);
  store->setStringArray({"de", "en"}, kAppleLanguagesKey);
  EXPECT_THAT(store->stringArrayForKey(kAppleLanguagesKey), Optional(ElementsAre("de", "en")));
  store->removeObjectForKey(kAppleLanguagesKey);
  ::setenv("LANG", "C", 1);
  EXPECT_EQ(store->stringArrayForKey(kAppleLanguagesKey), std::nullopt);
}

// What is damaged when the file is opened.

TEST_F(SqliteUserDefaultsTest, garbageIsKeptAside) {
  expectFreshStartOver(std::string(9'000, '\xA5'));
}

TEST_F(SqliteUserDefaultsTest, aShortTextIsKeptAside) { expectFreshStartOver("hello\n"); }

TEST_F(SqliteUserDefaultsTest, aBareHeaderIsKeptAside) {
  expectFreshStartOver(std::string("SQLite format 3\0", 16));
}

TEST_F(SqliteUserDefaultsTest, aTruncatedFileIsKeptAside) {
  makeFile();
  expectFreshStartOver(contentsOf(path_).substr(0, 6'000));
}

TEST_F(SqliteUserDefaultsTest, aFileOfAnotherProgramIsKeptAside) {
  OtherProgram(path_).run("CREATE TABLE songs (title TEXT)");
  expectFreshStartOver(contentsOf(path_));
}

TEST_F(SqliteUserDefaultsTest, aTableOfAnotherShapeIsKeptAside) {
  OtherProgram(path_).run("CREATE TABLE settings (key TEXT, value TEXT)");
  expectFreshStartOver(contentsOf(path_));
}

TEST_F(SqliteUserDefaultsTest, aTableThatRefusesOurRowsIsKeptAsideOnceThatShows) {
  OtherProgram(path_).run(
      "CREATE TABLE settings (key TEXT PRIMARY KEY, value, more TEXT NOT NULL)");
  const auto store = open();
  EXPECT_THAT(log_->lines(), IsEmpty());
  store->setInteger(8, "count");
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(log_->lines().size(), 1U);
  EXPECT_TRUE(fs::exists(path_ + ".damaged-1"));
  EXPECT_EQ(open()->integerForKey("count"), 8);
}

TEST_F(SqliteUserDefaultsTest, anEmptyFileIsANewStore) {
  writeFile(path_, "");
  const auto store = open();
  store->setInteger(8, "count");
  EXPECT_TRUE(store->synchronize());
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(SqliteUserDefaultsTest, nothingThatHasBeenKeptIsOverwritten) {
  writeFile(path_ + ".damaged-1", "first");
  writeFile(path_ + ".damaged-2-wal", "second");
  writeFile(path_, "garbage that is long enough");
  const auto store = open();
  expectFreshStart(*store, "garbage that is long enough", path_ + ".damaged-3");
  EXPECT_EQ(contentsOf(path_ + ".damaged-1"), "first");
  EXPECT_EQ(contentsOf(path_ + ".damaged-2-wal"), "second");
}

TEST_F(SqliteUserDefaultsTest, theCompanionsOfADamagedFileGoWithIt) {
  writeFile(path_, std::string(9'000, '\xA5'));
  writeFile(path_ + "-wal", "log");
  writeFile(path_ + "-shm", "index");
  const auto store = open();
  EXPECT_EQ(contentsOf(path_ + ".damaged-1-wal"), "log");
  EXPECT_TRUE(fs::exists(path_ + ".damaged-1-shm"));  // SQLite's own cache, made anew at any time
  store->setInteger(8, "count");
  EXPECT_TRUE(store->synchronize());
}

TEST_F(SqliteUserDefaultsTest, aFileWithAGoodBeginningIsKeptAside) {
  makeFile();
  std::string contents = contentsOf(path_);
  ASSERT_GT(contents.size(), 8'192U);
  contents.replace(4'096, std::string::npos, std::string(contents.size() - 4'096, '\xA5'));
  expectFreshStartOver(contents);
}

// What it stands for would be stored twice, and the older one read.
TEST_F(SqliteUserDefaultsTest, aFileWhoseIndexIsDamagedIsKeptAside) {
  makeFile();
  std::string contents = contentsOf(path_);
  constexpr std::size_t kEndOfIndex = 3UL * 4'096;  // the third page, behind schema and table
  contents.replace(kEndOfIndex - 100, 100, std::string(100, '\0'));
  expectFreshStartOver(contents);
}

// What turns out to be damaged later.

TEST_F(SqliteUserDefaultsTest, damageThatShowsDuringAReadIsKeptAside) {
  makeFile();
  const auto store = open();
  EXPECT_EQ(store->integerForKey("count"), 3);
  fs::resize_file(path_, 4'096);
  expectFreshStart(*store, contentsOf(path_), path_ + ".damaged-1");
}

TEST_F(SqliteUserDefaultsTest, aFileThatIsCutWhileItIsOpenIsKeptAside) {
  makeFile();
  const auto store = open();
  EXPECT_EQ(store->integerForKey("count"), 3);
  fs::resize_file(path_, 4'096);
  OtherProgram(path_ + ".other").run("CREATE TABLE t (x)");  // an unrelated file changes nothing
  store->setString("new", "text");
  EXPECT_TRUE(store->synchronize());
  EXPECT_THAT(store->stringForKey("text"), Optional(std::string("new")));
  EXPECT_THAT(open()->stringForKey("text"), Optional(std::string("new")));
  EXPECT_EQ(log_->lines().size(), 1U);
}

TEST_F(SqliteUserDefaultsTest, aFileThatAnotherProcessHasReplacedIsNotKeptAsideAgain) {
  makeFile();
  const auto first = open();
  const auto second = open();
  fs::resize_file(path_, 4'096);
  first->setInteger(9, "count");
  EXPECT_TRUE(first->synchronize());
  EXPECT_EQ(second->integerForKey("count"), 9);
  second->setInteger(10, "count");
  EXPECT_TRUE(second->synchronize());
  EXPECT_EQ(first->integerForKey("count"), 10);
  EXPECT_EQ(log_->lines().size(), 1U);
  EXPECT_FALSE(fs::exists(path_ + ".damaged-2"));
}

TEST_F(SqliteUserDefaultsTest, aFileThatIsTakenAwayIsBegunAnew) {
  makeFile();
  const auto store = open();
  for (const char* companion : {"", "-wal", "-shm"}) {
    fs::remove(path_ + companion);
  }
  EXPECT_EQ(store->integerForKey("count"), 0);
  store->setInteger(4, "count");
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(open()->integerForKey("count"), 4);
  EXPECT_THAT(log_->lines(), IsEmpty());
}

// What cannot be used but is not damaged.

TEST_F(SqliteUserDefaultsTest, aFolderInTheFilesPlaceIsLeftAlone) {
  fs::create_directory(path_);
  expectMemoryOnly();
  EXPECT_TRUE(fs::is_directory(path_));
}

TEST_F(SqliteUserDefaultsTest, aPipeInTheFilesPlaceDoesNotHang) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  expectMemoryOnly();
}

TEST_F(SqliteUserDefaultsTest, worksInMemoryWhenTheFolderCannotBeMade) {
  writeFile(folder_ / "file", "");
  path_ = folder_ / "file/qorix/settings.sqlite";
  expectMemoryOnly();
}

TEST_F(SqliteUserDefaultsTest, worksInMemoryWhenTheFolderIsNotWritable) {
  fs::permissions(folder_.path(), fs::perms(0555));
  const bool isRoot = ::geteuid() == 0;
  if (isRoot) {  // whom no permission stops
    ASSERT_EQ(::seteuid(65534), 0);
  }
  expectMemoryOnly();
  if (isRoot) {
    ASSERT_EQ(::seteuid(0), 0);
  }
  fs::permissions(folder_.path(), fs::perms(0700));
}

TEST_F(SqliteUserDefaultsTest, worksInMemoryWhenTheNameIsTooLong) {
  path_ = folder_ / (std::string(300, 'x') + ".sqlite");
  expectMemoryOnly();
}

TEST_F(SqliteUserDefaultsTest, worksInMemoryWhenADamagedFileCannotBeMoved) {
  writeFile(path_, std::string(9'000, '\xA5'));
  fs::permissions(path_, fs::perms(0666));
  fs::permissions(folder_.path(), fs::perms(0555));
  const bool isRoot = ::geteuid() == 0;
  if (isRoot) {
    ASSERT_EQ(::seteuid(65534), 0);
  }
  {
    const auto store = open();
    store->setInteger(5, "count");
    EXPECT_FALSE(store->synchronize());
    EXPECT_EQ(store->integerForKey("count"), 5);
  }
  EXPECT_THAT(log_->lines(), ElementsAre(HasSubstr("cannot be moved (")));
  if (isRoot) {
    ASSERT_EQ(::seteuid(0), 0);
  }
  fs::permissions(folder_.path(), fs::perms(0700));
}

TEST_F(SqliteUserDefaultsTest, aStoreThatBecomesUsableGetsWhatIsPending) {
  fs::create_directory(path_);
  const auto store = open();
  store->setInteger(5, "count");
  EXPECT_FALSE(store->synchronize());
  fs::remove(path_);
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(open()->integerForKey("count"), 5);
}

TEST_F(SqliteUserDefaultsTest, aLockedFileKeepsValuesPendingAndIsNotDamaged) {
  makeFile();
  const auto store = open();
  OtherProgram other(path_);
  ASSERT_EQ(other.run("BEGIN IMMEDIATE"), SQLITE_OK);
  store->setInteger(4, "count");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(store->synchronize());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_TRUE(store->stringForKey("text").has_value()) << "it can be read all the same";
  EXPECT_FALSE(store->synchronize());
  EXPECT_EQ(store->integerForKey("count"), 4);
  EXPECT_EQ(open()->integerForKey("count"), 3);
  EXPECT_THAT(log_->lines(), ElementsAre(AllOf(HasSubstr(path_), HasSubstr("locked"))));
  other.run("ROLLBACK");
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(open()->integerForKey("count"), 4);
  EXPECT_FALSE(fs::exists(path_ + ".damaged-1"));
}

TEST_F(SqliteUserDefaultsTest, whileTheFileCannotBeReadReadsAnswerWhatItLastHeld) {
  makeFile();
  const auto store = open();
  for (const char* companion : {"", "-wal", "-shm"}) {
    fs::remove(path_ + companion);
  }
  fs::create_directory(path_);
  EXPECT_EQ(store->integerForKey("count"), 3);
  store->setInteger(4, "count");
  EXPECT_FALSE(store->synchronize());
  EXPECT_EQ(store->integerForKey("count"), 4);
  EXPECT_EQ(store->stringForKey("text")->size(), 50'000U);
  EXPECT_EQ(log_->lines().size(), 1U);
  fs::remove(path_);
  EXPECT_TRUE(store->synchronize());
  EXPECT_EQ(open()->integerForKey("count"), 4);
}

}  // namespace
}  // namespace qorix
