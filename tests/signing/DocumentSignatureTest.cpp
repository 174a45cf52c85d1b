#include <gmock/gmock.h>
#include <openssl/err.h>

#include "signing/Base64.h"
#include "signing/DocumentSignature.h"
#include "signing/PublicKey.h"
#include "support/SignedDocuments.h"

namespace qorix {
namespace {

using ::testing::Optional;

std::string bytesOfHex(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

struct Vector {
  const char* key;
  const char* message;
  const char* signature;
};

// The first three of RFC 8032, section 7.1.
constexpr Vector kVectors[] = {
    {"d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a", "",
     "e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e065224901555fb8821590a33bacc61e39701cf9b"
     "4"
     "6bd25bf5f0595bbe24655141438e7a100b"},
    {"3d4017c3e843895a92b70aa74d1b7ebc9c982ccf2ec4968cc0cd55f12af4660c", "72",
     "92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da085ac1e43e15996e458f3613d0f11"
     "d"
     "8c387b2eaeb4302aeeb00d291612bb0c00"},
    {"fc51cd8e6218a1a38da47ed00230f0580816ed13ba3303ac5deb911548908025", "af82",
     "6291d657deec24024827e69c3abe01a30ce548a284743a445e3680d7db5ac3ac18ff9b538d16f290ae67f760984dc"
     "6"
     "594a7c15e9716ed28dc027beceea1ec40a"},
};

TEST(DocumentSignatureTest, theStandardsOwnSignaturesAreGood) {
  for (const Vector& each : kVectors) {
    const auto key = PublicKey::fromBase64(base64(bytesOfHex(each.key)));
    ASSERT_TRUE(key);
    EXPECT_TRUE(key->hasSigned(bytesOfHex(each.message), bytesOfHex(each.signature)));
    EXPECT_FALSE(key->hasSigned(bytesOfHex(each.message) + "x", bytesOfHex(each.signature)));
    EXPECT_FALSE(key->hasSigned(bytesOfHex(each.message), bytesOfHex(each.signature) + "x"));
    EXPECT_FALSE(key->hasSigned(bytesOfHex(each.message), ""));
  }
}

TEST(DocumentSignatureTest, aKeyIsThirtyTwoBytesInPlainBase64) {
  const std::string good = base64(std::string(32, 'k'));
  EXPECT_TRUE(PublicKey::fromBase64(good));
  for (const std::string& wrong :
       {std::string(), std::string("="), good + "\n", " " + good, good + good, good.substr(1),
        good.substr(0, good.size() - 1), base64(std::string(31, 'k')), base64(std::string(33, 'k')),
        std::string(44, 'A'), std::string(43, '*') + "="}) {
    EXPECT_FALSE(PublicKey::fromBase64(wrong)) << wrong;
  }
}

// With them anybody can sign.
TEST(DocumentSignatureTest, keysOfSmallOrderAreNone) {
  for (const char last : {'\x00', '\x80'}) {
    for (const char first : {'\x00', '\x01'}) {
      EXPECT_FALSE(PublicKey::fromBase64(base64(first + std::string(30, '\0') + last)));
    }
  }
  for (const char first : {'\xEC', '\xED', '\xEE'}) {
    EXPECT_FALSE(PublicKey::fromBase64(base64(first + std::string(31, '\xFF'))));
  }
  EXPECT_FALSE(PublicKey::fromBase64(
      base64(bytesOfHex("c7176a703d4dd84fba3c0b760d10670f2a2053fa2c39ccc64ec7fd7792ac03fa"))));
  EXPECT_FALSE(PublicKey::fromBase64(
      base64(bytesOfHex("26e8958fc2b227b045c3f489f2ef98f0d5dfac05d3c63339b13802886d53fc05"))));
}

TEST(DocumentSignatureTest, theHostsOwnErrorsOfOpensslStay) {
  ERR_clear_error();
  const test::Signer signer;
  EXPECT_FALSE(PublicKey::fromBase64("QQ=="));
  EXPECT_NE(signatureFault(signer.signedText("a") + "b", {signer.publicKey()}), std::nullopt);
  EXPECT_NE(signatureFault(test::Signer().signedText("a"), {signer.publicKey()}), std::nullopt);
  EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST(DocumentSignatureTest, base64IsReadBackExactly) {
  for (std::size_t size = 0; size < 100; ++size) {
    const std::string bytes(size, static_cast<char>(size * 37));
    EXPECT_THAT(bytesOfBase64(base64(bytes)), Optional(bytes));
  }
  EXPECT_EQ(bytesOfBase64("QQ=="), "A");
  EXPECT_EQ(bytesOfBase64("QR=="), std::nullopt) << "another spelling of the same byte";
  EXPECT_EQ(bytesOfBase64("QQ"), std::nullopt);
  EXPECT_EQ(bytesOfBase64("QQ==QQ=="), std::nullopt);
}

TEST(DocumentSignatureTest, aSignedDocumentIsAccepted) {
  const test::Signer signer;
  const std::string text = "<a/>\n";
  EXPECT_EQ(signatureFault(signer.signedText(text), {signer.publicKey()}), std::nullopt);
  EXPECT_EQ(signatureFault(signer.signedText(text) + " \t\r\n", {signer.publicKey()}),
            std::nullopt);
  EXPECT_EQ(signatureFault(signer.signedText("\xEF\xBB\xBF<a>\r\n</a>"), {signer.publicKey()}),
            std::nullopt)
      << "a byte order mark, line ends of another system, none at the end";
}

TEST(DocumentSignatureTest, everyByteCounts) {
  const test::Signer signer;
  const std::string good = signer.signedText("<a>b</a>\n");
  for (std::size_t i = 0; i < good.size(); ++i) {
    for (const int bit : {1, 32}) {
      std::string changed = good;
      changed[i] = static_cast<char>(changed[i] ^ bit);
      EXPECT_NE(signatureFault(changed, {signer.publicKey()}), std::nullopt) << i;
    }
    std::string cut = good;
    cut.erase(i, 1);
    EXPECT_NE(signatureFault(cut, {signer.publicKey()}), std::nullopt) << i;
  }
  EXPECT_NE(signatureFault(good + "x", {signer.publicKey()}), std::nullopt);
  EXPECT_NE(signatureFault("x" + good, {signer.publicKey()}), std::nullopt);
}

TEST(DocumentSignatureTest, anyOfTheKeysIsEnough) {
  const test::Signer old;
  const test::Signer next;
  const test::Signer stranger;
  const std::vector<std::string> keys = {"no key", old.publicKey(), next.publicKey()};
  EXPECT_EQ(signatureFault(old.signedText("<a/>"), keys), std::nullopt);
  EXPECT_EQ(signatureFault(next.signedText("<a/>"), keys), std::nullopt);
  EXPECT_THAT(signatureFault(stranger.signedText("<a/>"), keys),
              Optional(std::string("its signature is by none of the public keys")));
  EXPECT_NE(signatureFault(old.signedText("<a/>"), {}), std::nullopt);
}

TEST(DocumentSignatureTest, onlyTheLastThingIsASignature) {
  const test::Signer signer;
  const std::vector<std::string> keys = {signer.publicKey()};
  const std::string comment = signer.signedText("");
  const auto none = Optional(std::string("it has no signature at its end"));
  EXPECT_THAT(signatureFault("", keys), none);
  EXPECT_THAT(signatureFault("<a/>", keys), none);
  EXPECT_THAT(signatureFault(comment + "<a/>", keys), none);
  EXPECT_THAT(signatureFault("<a>" + comment + "</a>", keys), none);
  EXPECT_THAT(signatureFault(signer.signedText("<a/>") + "<!-- more -->", keys), none);
  EXPECT_THAT(signatureFault("<a/><!-- qorix-signature: -->", keys), none);
  EXPECT_THAT(signatureFault("<a/><!-- qorix-signature: QQ== -->", keys),
              Optional(std::string("its signature is not 64 bytes in base64")));
  const std::string twice = signer.signedText(signer.signedText("<a/>"));
  EXPECT_EQ(signatureFault(twice, keys), std::nullopt) << "the later one covers the earlier one";
}

}  // namespace
}  // namespace qorix
