// The real program on real files.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "signing/Base64.h"
#include "signing/DocumentSignature.h"
#include "support/Documents.h"
#include "support/TemporaryFolder.h"
#include "tools/adcheck/ProgramRun.h"

namespace qorix::test {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::Not;

class SignTest : public testing::Test {
 protected:
  static ProgramRun sign(const std::vector<std::string>& arguments) {
    return runProgram(QORIX_SIGN, arguments);
  }

  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name, std::ios::binary) << text;
    return folder_ / name;
  }

  static std::string contentsOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// Makes a key and returns its public key.
  std::string makeKey() const {
    const auto made = sign({"keygen", key_});
    EXPECT_EQ(made.status, 0) << made.errors;
    return made.output.substr(0, made.output.find('\n'));
  }

  TemporaryFolder folder_;
  std::string key_ = folder_ / "private.pem";
};

TEST_F(SignTest, aNewKeyIsForItsOwnerAloneAndNeverPrinted) {
  ::umask(0);
  const auto made = sign({"keygen", key_});
  EXPECT_EQ(fs::status(key_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  const auto publicKey = bytesOfBase64(made.output.substr(0, made.output.size() - 1));
  ASSERT_TRUE(publicKey);
  EXPECT_EQ(publicKey->size(), 32U);
  const std::string pem = contentsOf(key_);
  EXPECT_THAT(pem, HasSubstr("BEGIN PRIVATE KEY"));
  // The last 32 bytes of the DER form are the key.
  const auto begin = pem.find('\n') + 1;
  const auto der = bytesOfBase64(pem.substr(begin, pem.find('\n', begin) - begin));
  ASSERT_TRUE(der);
  const std::string secret = base64(der->substr(der->size() - 32));
  EXPECT_THAT(made.output + made.errors, Not(HasSubstr(secret)));
  EXPECT_NE(made.output.substr(0, made.output.size() - 1), secret);
  EXPECT_EQ(sign({"public", key_}).output, made.output);
}

TEST_F(SignTest, noFileIsOverwrittenByANewKey) {
  write("private.pem", "precious");
  const auto refused = sign({"keygen", key_});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.output, "");
  EXPECT_EQ(contentsOf(key_), "precious");
}

TEST_F(SignTest, aSignedDocumentIsVerified) {
  const std::string publicKey = makeKey();
  const std::string text = makeDocument() + "\n";
  const std::string file = write("ads.xml", text);
  EXPECT_EQ(sign({"sign", "--key", key_, file}).status, 0);
  EXPECT_TRUE(contentsOf(file).starts_with(text));
  EXPECT_EQ(signatureFault(contentsOf(file), {publicKey}), std::nullopt);
  EXPECT_EQ(sign({"verify", "--public-key", publicKey, file}).status, 0);
  const std::string other = base64(std::string(32, 'k'));
  EXPECT_EQ(sign({"verify", "--public-key", other, "--public-key", publicKey, file}).status, 0);
  EXPECT_EQ(sign({"verify", "--public-key", other, file}).status, 1);
  EXPECT_EQ(sign({"verify", "--public-key", publicKey, write("plain.xml", text)}).status, 1);
}

TEST_F(SignTest, signingAgainReplacesTheSignature) {
  makeKey();
  const std::string file = write("ads.xml", makeDocument());
  sign({"sign", "--key", key_, file});
  const std::string once = contentsOf(file);
  sign({"sign", "--key", key_, file});
  EXPECT_EQ(contentsOf(file), once);
}

TEST_F(SignTest, theDocumentKeepsItsModeAndMayGoElsewhere) {
  makeKey();
  const std::string text = makeDocument();
  const std::string file = write("ads.xml", text);
  ::chmod(file.c_str(), 0640);
  EXPECT_EQ(sign({"sign", "--key", key_, "--output", folder_ / "signed.xml", file}).status, 0);
  EXPECT_EQ(contentsOf(file), text);
  EXPECT_TRUE(dividedDocument(contentsOf(folder_ / "signed.xml")));
  EXPECT_EQ(sign({"sign", "--key", key_, file}).status, 0);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 3) << "nothing is left";
}

TEST_F(SignTest, linksStayAndWhatIsNoFileIsRefused) {
  makeKey();
  const std::string file = write("ads.xml", makeDocument());
  const std::string link = folder_ / "link.xml";
  fs::create_symlink(file, link);
  EXPECT_EQ(sign({"sign", "--key", key_, link}).status, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_TRUE(dividedDocument(contentsOf(file)));
  const std::string folder = folder_ / "folder";
  fs::create_directory(folder);
  EXPECT_EQ(sign({"sign", "--key", key_, "--output", folder, file}).status, 2);
  EXPECT_TRUE(fs::is_directory(folder));
}

TEST_F(SignTest, whatIsNoDocumentIsNotSigned) {
  makeKey();
  for (const char* text : {"", "<a>", "<a/><!--", "<a><![CDATA[</a>"}) {
    const std::string file = write("ads.xml", text);
    const auto refused = sign({"sign", "--key", key_, file});
    EXPECT_EQ(refused.status, 2) << text;
    EXPECT_THAT(refused.errors, HasSubstr("not well-formed"));
    EXPECT_EQ(contentsOf(file), text);
  }
}

TEST_F(SignTest, aKeyThatOthersMayReadIsRefused) {
  makeKey();
  const std::string file = write("ads.xml", makeDocument());
  for (const mode_t mode : {0640U, 0604U, 0620U}) {
    ::chmod(key_.c_str(), mode);
    const auto refused = sign({"sign", "--key", key_, file});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, HasSubstr("chmod 600"));
  }
}

TEST_F(SignTest, whatIsNoKeyIsRefused) {
  const std::string file = write("ads.xml", makeDocument());
  write("private.pem", "no key");
  ::chmod(key_.c_str(), 0600);
  EXPECT_EQ(sign({"sign", "--key", key_, file}).status, 2);
  EXPECT_EQ(sign({"sign", "--key", folder_ / "missing", file}).status, 2);
  EXPECT_EQ(sign({"verify", "--public-key", "x", file}).status, 2);
}

TEST_F(SignTest, aWrongCommandLineIsRefused) {
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{},
                                             {"burn", "f"},
                                             {"sign", "f"},
                                             {"verify", "f"},
                                             {"keygen"},
                                             {"keygen", "--key", "k", "f"},
                                             {"keygen", "--output", "o", "f"},
                                             {"sign", "--public-key", "k", "--key", "k", "f"}}) {
    EXPECT_EQ(sign(wrong).status, 2);
  }
}

// Anybody can check a signature without our program.
TEST_F(SignTest, opensslVerifiesIt) {
  makeKey();
  const std::string file = write("ads.xml", makeDocument());
  sign({"sign", "--key", key_, file});
  const std::string document = contentsOf(file);
  const auto divided = dividedDocument(document);
  ASSERT_TRUE(divided);
  const std::string text = write("text", std::string(divided->text));
  const std::string signature = write("signature", *bytesOfBase64(divided->signature));
  const std::vector<std::string> verify = {"pkeyutl", "-verify", "-rawin",   "-inkey", key_,
                                           "-in",     text,      "-sigfile", signature};
  EXPECT_EQ(runProgram("/usr/bin/openssl", verify).status, 0);
  write("text", std::string(divided->text) + " ");
  EXPECT_EQ(runProgram("/usr/bin/openssl", verify).status, 1);
}

}  // namespace
}  // namespace qorix::test
