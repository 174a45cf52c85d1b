#pragma once

#include <string>
#include <string_view>

#include "webview/PageContract.h"

namespace qorix {

// The scripts that are evaluated in the page. Their texts are part of the contract with the authors
// of pages.

/// Evaluates to "support" if the page wants to know which applications are installed.
std::string filterSupportScript();

/// Asks the page for the bundle identifiers that it promotes.
std::string listPromoAppsScript();

/// Hides the element with that id, if the page has one.
std::string hideElementScript(std::string_view elementId);

/// Gives the page the host's identifier and what is known of the promoted applications. The lists
/// are array literals. Nothing is escaped, as pages expect.
std::string postPromoAppInfoScript(std::string_view hostIdentifier, std::string_view appIds,
                                   std::string_view installFlags);

}  // namespace qorix
