#include "tools/sign/PrivateKey.h"

#include <fcntl.h>
#include <openssl/pem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "signing/Base64.h"

namespace qorix::tools::sign {

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct FreeContext {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

// OpenSSL would ask at the terminal for the passphrase of an encrypted key.
int noPassphrase(char* /*buffer*/, int /*size*/, int /*isWriting*/, void* /*data*/) { return -1; }

std::string systemFault() { return std::strerror(errno); }

}  // namespace

std::optional<PrivateKey> PrivateKey::generate() {
  EVP_PKEY* key = EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519");
  return key == nullptr ? std::nullopt : std::optional(PrivateKey(key));
}

std::optional<PrivateKey> PrivateKey::load(const std::string& file, std::string& fault) {
  const File stream(std::fopen(file.c_str(), "re"));
  struct stat status {};
  if (stream == nullptr || ::fstat(::fileno(stream.get()), &status) != 0) {
    fault = systemFault();
    return std::nullopt;
  }
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    fault = "others than its owner may use it: chmod 600";
    return std::nullopt;
  }
  EVP_PKEY* key = PEM_read_PrivateKey(stream.get(), nullptr, noPassphrase, nullptr);
  std::optional<PrivateKey> result;
  if (key != nullptr) {
    result = PrivateKey(key);
  }
  if (key == nullptr || EVP_PKEY_get_id(key) != EVP_PKEY_ED25519) {
    fault = "it holds no Ed25519 private key without passphrase in PEM";
    return std::nullopt;
  }
  return result;
}

std::optional<std::string> PrivateKey::save(const std::string& file) const {
  const int descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    return systemFault();
  }
  std::FILE* stream = ::fdopen(descriptor, "w");
  const bool isWritten =
      stream != nullptr &&
      PEM_write_PKCS8PrivateKey(stream, key_.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1 &&
      std::fflush(stream) == 0 && ::fsync(descriptor) == 0;
  const std::string fault = systemFault();
  if (stream == nullptr) {
    ::close(descriptor);
  } else {
    std::fclose(stream);
  }
  if (!isWritten) {
    ::unlink(file.c_str());
    return fault;
  }
  return std::nullopt;
}

std::string PrivateKey::publicKey() const {
  std::string bytes(32, '\0');
  std::size_t size = bytes.size();
  EVP_PKEY_get_raw_public_key(key_.get(), reinterpret_cast<unsigned char*>(bytes.data()), &size);
  return base64(bytes);
}

std::optional<std::string> PrivateKey::sign(std::string_view bytes) const {
  const std::unique_ptr<EVP_MD_CTX, FreeContext> context(EVP_MD_CTX_new());
  std::string signature(64, '\0');
  std::size_t size = signature.size();
  if (EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key_.get()) != 1 ||
      EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                     reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) != 1) {
    return std::nullopt;
  }
  return signature;
}

}  // namespace qorix::tools::sign
