#include "signing/DocumentSignature.h"

#include <algorithm>

#include "signing/Base64.h"
#include "signing/PublicKey.h"

namespace qorix {

namespace {

constexpr std::string_view kBegin = "<!-- qorix-signature: ";
constexpr std::string_view kEnd = " -->";
constexpr std::size_t kSignatureSize = 64;

}  // namespace

std::optional<SignedDocument> dividedDocument(std::string_view document) {
  const auto end = document.find_last_not_of(" \t\r\n");
  const std::string_view rest = document.substr(0, end == document.npos ? 0 : end + 1);
  const auto begin = rest.rfind("<!--");
  if (begin == rest.npos || !rest.substr(begin).starts_with(kBegin) || !rest.ends_with(kEnd) ||
      rest.size() - begin < kBegin.size() + kEnd.size()) {
    return std::nullopt;
  }
  const std::string_view comment = rest.substr(begin);
  return SignedDocument{
      rest.substr(0, begin),
      comment.substr(kBegin.size(), comment.size() - kBegin.size() - kEnd.size())};
}

std::string signatureComment(std::string_view signature) {
  return std::string(kBegin) + base64(signature) + std::string(kEnd);
}

std::optional<std::string> signatureFault(std::string_view document,
                                          const std::vector<std::string>& publicKeys) {
  const auto divided = dividedDocument(document);
  if (!divided) {
    return "it has no signature at its end";
  }
  const auto signature = bytesOfBase64(divided->signature);
  if (!signature || signature->size() != kSignatureSize) {
    return "its signature is not 64 bytes in base64";
  }
  const bool isSigned = std::ranges::any_of(publicKeys, [&](const std::string& text) {
    const auto key = PublicKey::fromBase64(text);
    return key && key->hasSigned(divided->text, *signature);
  });
  return isSigned ? std::nullopt
                  : std::optional<std::string>("its signature is by none of the public keys");
}

}  // namespace qorix
