#include "tools/sign/Tool.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "definition/XmlDocument.h"
#include "signing/DocumentSignature.h"
#include "signing/PublicKey.h"
#include "tools/common/Streams.h"
#include "tools/sign/DocumentFile.h"
#include "tools/sign/Options.h"
#include "tools/sign/PrivateKey.h"

namespace qorix::tools::sign {

namespace {

int fail(const std::string& why, int status = kTrouble) {
  std::fprintf(stderr, "qorix-sign: %s\n", why.c_str());
  return status;
}

int print(const std::string& line) {
  return writeOutput(line + "\n")
             ? kDone
             : fail(std::string("the output cannot be written: ") + std::strerror(errno));
}

int generateKey(const Options& options) {
  const auto key = PrivateKey::generate();
  if (!key) {
    return fail("the system cannot make a key");
  }
  if (const auto fault = key->save(options.file)) {
    return fail(options.file + " cannot be written: " + *fault);
  }
  return print(key->publicKey());
}

int printPublicKey(const Options& options) {
  std::string fault;
  const auto key = PrivateKey::load(options.file, fault);
  return key ? print(key->publicKey()) : fail(options.file + " cannot be used: " + fault);
}

/// The document with its new signature in place of the old one; nullopt if the system cannot sign.
std::optional<std::string> signedText(const std::string& document, const PrivateKey& key) {
  const auto divided = dividedDocument(document);
  std::string text(divided ? divided->text : document);
  if (!text.ends_with('\n')) {
    text += '\n';
  }
  const auto signature = key.sign(text);
  return signature ? std::optional(text + signatureComment(*signature) + "\n") : std::nullopt;
}

int signDocument(const Options& options) {
  std::string fault;
  const auto key = PrivateKey::load(options.keyFile, fault);
  if (!key) {
    return fail(options.keyFile + " cannot be used: " + fault);
  }
  const auto document = readFile(options.file);
  if (!document) {
    return fail(options.file + " cannot be read: " + std::strerror(errno));
  }
  const auto text = signedText(*document, *key);
  if (!text) {
    return fail("the system cannot sign");
  }
  if (!XmlDocument::parse(*text)) {
    return fail(options.file + " is not well-formed XML: nothing is signed");
  }
  const std::string& output = options.output.empty() ? options.file : options.output;
  if (const auto trouble = replaceFile(output, *text)) {
    return fail(output + " cannot be written: " + *trouble);
  }
  return kDone;
}

int verifyDocument(const Options& options) {
  if (!arePublicKeys(options.publicKeys)) {
    return fail("a --public-key is no Ed25519 public key in base64");
  }
  const auto document = readFile(options.file);
  if (!document) {
    return fail(options.file + " cannot be read: " + std::strerror(errno));
  }
  if (const auto fault = signatureFault(*document, options.publicKeys)) {
    return fail(options.file + ": " + *fault, kNotSigned);
  }
  return print(options.file + ": signed");
}

}  // namespace

int runTool(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away is a failing write
  const Options options = parseOptions(argc, argv);
  if (const auto fault = usageFault(options)) {
    return fail(*fault + "\nTry --help.");
  }
  return options.command == "keygen"   ? generateKey(options)
         : options.command == "public" ? printPublicKey(options)
         : options.command == "sign"   ? signDocument(options)
                                       : verifyDocument(options);
}

}  // namespace qorix::tools::sign
