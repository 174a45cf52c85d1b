#include <utility>

#include <qorix/MyPushAdManager.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "signing/DocumentSignature.h"
#include "signing/PublicKey.h"

namespace qorix {

namespace {

/// Once in a process: a host that asks for signatures asks for them with wrong keys, too.
void logWrongKeys(const std::vector<std::string>& keys) {
  static bool isLogged = false;
  if (std::exchange(isLogged, true)) {
    return;
  }
  for (const std::string& key : keys) {
    if (!PublicKey::fromBase64(key)) {
      logLine("ZAM documentPublicKeys holds what is no Ed25519 public key in base64: " + key);
    }
  }
}

}  // namespace

bool MyPushAdManager::isSignedAsAsked(const std::string& text) {
  const std::vector<std::string>& keys = platform().documentPublicKeys;
  if (keys.empty()) {
    return true;
  }
  logWrongKeys(keys);
  const auto fault = signatureFault(text, keys);
  if (fault) {
    logLine("ZAM The ad document is refused: " + *fault);
  }
  return !fault;
}

}  // namespace qorix
