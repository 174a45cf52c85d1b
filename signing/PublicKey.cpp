#include "signing/PublicKey.h"

#include "signing/Base64.h"

namespace qorix {

namespace {

const unsigned char* asBytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

struct FreeContext {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

}  // namespace

std::optional<PublicKey> PublicKey::fromBase64(std::string_view text) {
  const auto bytes = bytesOfBase64(text);
  EVP_PKEY* key =
      bytes ? EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, asBytes(*bytes), bytes->size())
            : nullptr;
  return key == nullptr ? std::nullopt : std::optional(PublicKey(key));
}

bool PublicKey::hasSigned(std::string_view bytes, std::string_view signature) const {
  const std::unique_ptr<EVP_MD_CTX, FreeContext> context(EVP_MD_CTX_new());
  return context != nullptr &&
         EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key_.get()) == 1 &&
         EVP_DigestVerify(context.get(), asBytes(signature), signature.size(), asBytes(bytes),
                          bytes.size()) == 1;
}

}  // namespace qorix
