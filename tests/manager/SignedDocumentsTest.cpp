#include "manager/ManagerTest.h"
#include "support/Documents.h"
#include "support/SignedDocuments.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class SignedDocumentsTest : public ManagerTest {
 protected:
  void askFor(const std::vector<std::string>& keys) {
    Platform services = fakes_.services();
    services.documentPublicKeys = keys;
    installPlatform(services);
  }

  test::Signer signer_;
};

TEST_F(SignedDocumentsTest, aSignedDocumentIsReadKeptAndShownAsEver) {
  askFor({signer_.publicKey()});
  show(hostView_);
  const std::string text = signer_.signedText(makeDocument());
  land(text);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
  EXPECT_EQ(cached(), text);
  EXPECT_THAT(hostView_->children, SizeIs(1));
}

TEST_F(SignedDocumentsTest, anyOtherIsAFailedFetch) {
  askFor({signer_.publicKey()});
  show(hostView_);
  land(makeDocument());
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("ZAM The ad document is refused: it has no signature at its end",
                          "ZAM dError rty"));
  EXPECT_THAT(fakes_.runLoop->pendingDelays(), ElementsAre(60));
  EXPECT_EQ(cached(), std::nullopt);
  EXPECT_EQ(manager().lonePushAdInfo(), nullptr);
  EXPECT_THAT(hostView_->children, IsEmpty());
}

TEST_F(SignedDocumentsTest, aFailedFetchLeavesWhatIsInForce) {
  askFor({signer_.publicKey()});
  show(hostView_);
  const std::string good = signer_.signedText(makeDocument());
  land(good);
  const auto info = manager().lonePushAdInfo();
  manager().downloadSuccessfullyWithString(test::Signer().signedText(makeDocument({.adid = "9"})));
  EXPECT_EQ(manager().lonePushAdInfo(), info);
  EXPECT_EQ(cached(), good);
}

TEST_F(SignedDocumentsTest, aKeptDocumentOfATimeWithoutKeysIsNeitherReadNorLost) {
  askFor({signer_.publicKey()});
  const std::string old = makeDocument();
  storeInCache(old);
  show(hostView_);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(fakes_.log->lines(),
              ElementsAre("ZAM The ad document is refused: it has no signature at its end"));
  EXPECT_THAT(hostView_->children, IsEmpty());
  EXPECT_EQ(cached(), old);
}

TEST_F(SignedDocumentsTest, aKeptDocumentThatIsSignedIsShownAtOnce) {
  askFor({test::Signer().publicKey(), signer_.publicKey()});
  storeInCache(signer_.signedText(makeDocument()));
  show(hostView_);
  fakes_.runLoop->runUntilIdle();
  EXPECT_THAT(fakes_.log->lines(), IsEmpty());
  EXPECT_THAT(hostView_->children, SizeIs(1));
}

TEST_F(SignedDocumentsTest, wrongKeysAreLoggedOnceAndRefuseEverything) {
  askFor({"wrong"});
  show(hostView_);
  land(signer_.signedText(makeDocument()));
  EXPECT_THAT(
      fakes_.log->lines(),
      ElementsAre("ZAM No Ed25519 public key in base64: number 1 of the documentPublicKeys",
                  "ZAM The ad document is refused: its signature is by none of the public keys",
                  "ZAM dError rty"));
  fakes_.log->takeLines();
  manager().downloadSuccessfullyWithString(makeDocument());
  EXPECT_THAT(fakes_.log->lines(), SizeIs(2));
}

TEST_F(SignedDocumentsTest, aHostWithoutKeysReadsSignedDocumentsAsOthers) {
  show(hostView_);
  const std::string text = signer_.signedText(makeDocument());
  land(text);
  EXPECT_THAT(fakes_.log->lines(), ElementsAre("ZAM dSuccess", "ZAM dadstring is saved."));
  EXPECT_THAT(hostView_->children, SizeIs(1));
}

}  // namespace
}  // namespace qorix
