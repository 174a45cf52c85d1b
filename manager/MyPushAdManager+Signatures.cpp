#include <string>
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
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (!PublicKey::fromBase64(keys[i])) {  // not shown: it may be a private one
      logLine("ZAM No Ed25519 public key in base64: number " + std::to_string(i + 1) +
              " of the documentPublicKeys");
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
