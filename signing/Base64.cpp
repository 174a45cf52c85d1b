#include "signing/Base64.h"

#include <openssl/evp.h>

#include "signing/Bytes.h"

namespace qorix {

namespace {

unsigned char* asWritableBytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

}  // namespace

std::string base64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // OpenSSL ends it with a NUL
  EVP_EncodeBlock(asWritableBytes(text), asBytes(bytes), static_cast<int>(bytes.size()));
  text.pop_back();
  return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  std::string bytes(text.size() / 4 * 3, '\0');
  if (EVP_DecodeBlock(asWritableBytes(bytes), asBytes(text), static_cast<int>(text.size())) < 0) {
    return std::nullopt;
  }
  // OpenSSL decodes the padding to zeros, and skips blanks around the text.
  for (int padding = 0; padding < 2 && text.ends_with('='); ++padding) {
    text.remove_suffix(1);
    bytes.pop_back();
  }
  const std::string again = base64(bytes);
  const auto padded = again.size() - text.size();
  return padded <= 2 && again.starts_with(text) && again.ends_with(std::string(padded, '='))
             ? std::optional(std::move(bytes))
             : std::nullopt;
}

}  // namespace qorix
