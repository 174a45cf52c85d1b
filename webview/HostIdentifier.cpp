#include "webview/HostIdentifier.h"

namespace qorix {

namespace {

constinit HostIdentifier::Source knownSource = nullptr;

}  // namespace

void HostIdentifier::setSource(Source source) { knownSource = source; }

std::string HostIdentifier::current() {
  return knownSource == nullptr ? std::string() : knownSource().value_or("");
}

}  // namespace qorix
