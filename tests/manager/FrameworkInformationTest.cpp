#include <dlfcn.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include <qorix/QORIXCommonUtil.h>
#include <qorix/QORIXInfo.h>
#include <qorix/QORIXVersion.h>

namespace qorix {
namespace {

constexpr const char* kVersionLine = "@(#)PROGRAM:QORIX  PROJECT:QORIX-2\n";

TEST(FrameworkInformationTest, namesTheInternalVersionAndTheBuild) {
  EXPECT_EQ(QORIXInfo::frameworkInfoString(),
            "{QORIXFramework Info: QORIXFrameworkInternalVersion=25.3.0, " +
                QORIXCommonUtil::fetchQORIXCompileDateTimeString() + "}");
}

TEST(FrameworkInformationTest, isOneLineAndEndsWithABrace) {
  const std::string info = QORIXInfo::frameworkInfoString();
  EXPECT_EQ(info.find('\n'), std::string::npos);
  EXPECT_TRUE(info.ends_with("}"));
}

TEST(FrameworkInformationTest, theBuildStampHasItsForm) {
  const std::string stamp = QORIXCommonUtil::fetchQORIXCompileDateTimeString();
  const std::regex form(
      "QORIX compile on \\[(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) "
      "( [1-9]|[12][0-9]|3[01]) 2[0-9]{3} - ([01][0-9]|2[0-3]):[0-5][0-9]:[0-5][0-9]\\]");
  EXPECT_TRUE(std::regex_match(stamp, form)) << stamp;
}

TEST(FrameworkInformationTest, theVersionStringEndsWithANewline) {
  EXPECT_STREQ(QORIXVersionString, kVersionLine);
}

TEST(FrameworkInformationTest, theVersionNumberIsTwo) { EXPECT_EQ(QORIXVersionNumber, 2.0); }

TEST(FrameworkInformationTest, theVersionDataIsFoundByName) {
  void* library = ::dlopen(QORIX_LIBRARY_FILE, RTLD_NOW);
  ASSERT_NE(library, nullptr) << ::dlerror();
  const auto* text = static_cast<const char*>(::dlsym(library, "QORIXVersionString"));
  const auto* number = static_cast<const double*>(::dlsym(library, "QORIXVersionNumber"));
  ASSERT_NE(text, nullptr);
  ASSERT_NE(number, nullptr);
  EXPECT_STREQ(text, kVersionLine);
  EXPECT_EQ(*number, 2.0);
  ::dlclose(library);
}

// What what(1) and strings(1) look for.
TEST(FrameworkInformationTest, theVersionLineIsInTheLibrarysFile) {
  std::ifstream file(QORIX_LIBRARY_FILE, std::ios::binary);
  std::string bytes(std::filesystem::file_size(QORIX_LIBRARY_FILE), '\0');
  ASSERT_TRUE(file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())));
  EXPECT_NE(bytes.find(std::string(kVersionLine) + '\0'), std::string::npos);
}

}  // namespace
}  // namespace qorix
