#include "signing/PublicKey.h"

#include <openssl/err.h>

#include <algorithm>
#include <array>
#include <string>

#include "signing/Base64.h"
#include "signing/Bytes.h"

namespace qorix {

namespace {

constexpr std::size_t kKeySize = 32;

struct FreeContext {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

/// The errors of the host's own use of OpenSSL, which are the thread's, stay as they are.
class OwnErrors {
 public:
  OwnErrors() { ERR_set_mark(); }
  OwnErrors(const OwnErrors&) = delete;
  OwnErrors& operator=(const OwnErrors&) = delete;
  ~OwnErrors() { ERR_pop_to_mark(); }
};

/// The points of small order, in all spellings, without the last byte's highest bit, which is the
/// sign: whoever likes can make signatures that they verify.
constexpr std::array<std::string_view, 7> kSmallOrder = {
    std::string_view("\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
                     "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00",
                     kKeySize),
    std::string_view("\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
                     "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00",
                     kKeySize),
    std::string_view("\x26\xE8\x95\x8F\xC2\xB2\x27\xB0\x45\xC3\xF4\x89\xF2\xEF\x98\xF0"
                     "\xD5\xDF\xAC\x05\xD3\xC6\x33\x39\xB1\x38\x02\x88\x6D\x53\xFC\x05",
                     kKeySize),
    std::string_view("\xC7\x17\x6A\x70\x3D\x4D\xD8\x4F\xBA\x3C\x0B\x76\x0D\x10\x67\x0F"
                     "\x2A\x20\x53\xFA\x2C\x39\xCC\xC6\x4E\xC7\xFD\x77\x92\xAC\x03\x7A",
                     kKeySize),
    std::string_view("\xEC\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F",
                     kKeySize),
    std::string_view("\xED\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F",
                     kKeySize),
    std::string_view("\xEE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F",
                     kKeySize),
};

bool isOfSmallOrder(std::string key) {
  key.back() = static_cast<char>(key.back() & 0x7F);
  return std::ranges::find(kSmallOrder, key) != kSmallOrder.end();
}

}  // namespace

std::optional<PublicKey> PublicKey::fromBase64(std::string_view text) {
  const auto bytes = bytesOfBase64(text);
  if (!bytes || bytes->size() != kKeySize || isOfSmallOrder(*bytes)) {
    return std::nullopt;
  }
  const OwnErrors errors;
  EVP_PKEY* key =
      EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, asBytes(*bytes), bytes->size());
  return key == nullptr ? std::nullopt : std::optional(PublicKey(key));
}

bool arePublicKeys(const std::vector<std::string>& texts) {
  return std::ranges::all_of(
      texts, [](const auto& text) { return PublicKey::fromBase64(text).has_value(); });
}

bool PublicKey::hasSigned(std::string_view bytes, std::string_view signature) const {
  const OwnErrors errors;
  const std::unique_ptr<EVP_MD_CTX, FreeContext> context(EVP_MD_CTX_new());
  return context != nullptr &&
         EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key_.get()) == 1 &&
         EVP_DigestVerify(context.get(), asBytes(signature), signature.size(), asBytes(bytes),
                          bytes.size()) == 1;
}

}  // namespace qorix
