#pragma once

#include <openssl/evp.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace qorix::tools::sign {

/// An Ed25519 private key. It leaves this class into its file only.
class PrivateKey {
 public:
  /// A new key; nullopt if the system has no randomness to give.
  static std::optional<PrivateKey> generate();

  /// Reads a PEM file that its owner alone may read. Sets `fault` and returns nullopt otherwise.
  static std::optional<PrivateKey> load(const std::string& file, std::string& fault);

  /// Writes the key as PEM (PKCS #8) to a new file for its owner alone. Returns the fault, if any;
  /// there is then no file, unless there was one before, which stays as it is.
  std::optional<std::string> save(const std::string& file) const;

  /// What hosts are given: the public key in base64.
  std::string publicKey() const;

  /// The signature, 64 bytes; nullopt if the system cannot sign.
  std::optional<std::string> sign(std::string_view bytes) const;

 private:
  struct Free {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  };

  explicit PrivateKey(EVP_PKEY* key) : key_(key) {}

  std::unique_ptr<EVP_PKEY, Free> key_;
};

}  // namespace qorix::tools::sign
