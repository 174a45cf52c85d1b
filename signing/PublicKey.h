#pragma once

#include <openssl/evp.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix {

/// An Ed25519 public key.
class PublicKey {
 public:
  /// The 32 bytes of a key in base64. Nullopt for anything else.
  static std::optional<PublicKey> fromBase64(std::string_view text);

  /// Whether `signature`, 64 bytes, is of these bytes and by the owner of this key.
  bool hasSigned(std::string_view bytes, std::string_view signature) const;

 private:
  struct Free {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  };

  explicit PublicKey(EVP_PKEY* key) : key_(key) {}

  std::unique_ptr<EVP_PKEY, Free> key_;
};

/// Whether each of them is the text of a key.
bool arePublicKeys(const std::vector<std::string>& texts);

}  // namespace qorix
