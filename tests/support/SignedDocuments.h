#pragma once

#include <openssl/evp.h>

#include <memory>
#include <string>
#include <string_view>

#include "signing/Base64.h"
#include "signing/DocumentSignature.h"

namespace qorix::test {

/// Somebody who signs documents with a key of its own.
class Signer {
 public:
  std::string publicKey() const {
    std::string bytes(32, '\0');
    std::size_t size = bytes.size();
    EVP_PKEY_get_raw_public_key(key_.get(), reinterpret_cast<unsigned char*>(bytes.data()), &size);
    return base64(bytes);
  }

  std::string signedText(const std::string& text) const {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    std::string signature(64, '\0');
    std::size_t size = signature.size();
    EVP_DigestSignInit(context, nullptr, nullptr, nullptr, key_.get());
    EVP_DigestSign(context, reinterpret_cast<unsigned char*>(signature.data()), &size,
                   reinterpret_cast<const unsigned char*>(text.data()), text.size());
    EVP_MD_CTX_free(context);
    return text + signatureComment(signature);
  }

 private:
  std::shared_ptr<EVP_PKEY> key_{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), EVP_PKEY_free};
};

}  // namespace qorix::test
