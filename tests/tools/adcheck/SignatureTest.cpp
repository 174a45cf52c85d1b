#include "support/SignedDocuments.h"
#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class SignatureTest : public AdcheckTest {
 protected:
  Signer signer_;
  std::string signed_ = signer_.signedText(AdDocument().text());
};

TEST_F(SignatureTest, whatHostsRefuseIsRefused) {
  for (const auto* format : {"text", "json", "sarif"}) {
    const std::vector<std::string> asked = {"--format", format, "--public-key",
                                            Signer().publicKey()};
    const auto with = [&asked](std::vector<std::string> more) {
      auto all = asked;
      all.insert(all.end(), more.begin(), more.end());
      return all;
    };
    const auto accepted = run(with({"--public-key", signer_.publicKey(), write(signed_)}));
    EXPECT_EQ(accepted.status, 0);
    EXPECT_THAT(accepted.errors, HasSubstr("the signature is by one of the keys"));
    EXPECT_NE(accepted.output, "");
    const auto strange = run(with({write(signed_)}));
    EXPECT_EQ(strange.status, 1);
    EXPECT_THAT(strange.errors, HasSubstr("its signature is by none of the public keys"));
    EXPECT_EQ(strange.output, "");
    const auto missing = run(with({write(AdDocument().text())}));
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors, HasSubstr("it has no signature at its end"));
  }
}

TEST_F(SignatureTest, withoutKeysItIsToldThatThereIsOne) {
  const auto with = run({write(signed_)});
  const auto without = run({write(AdDocument().text())});
  EXPECT_THAT(with.errors, HasSubstr("there is a signature"));
  EXPECT_THAT(without.errors, Not(HasSubstr("signature")));
  EXPECT_EQ(with.status, 0);
  EXPECT_EQ(with.output, without.output) << "and nothing else changes";
}

TEST_F(SignatureTest, aWrongKeyIsWrongUsage) {
  const auto result = run({"--public-key", "wrong", write(signed_)});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("no Ed25519 public key"));
}

}  // namespace
}  // namespace qorix::test
