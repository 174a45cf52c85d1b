#pragma once

#include <string>
#include <string_view>

namespace qorix {

// What is said to the page, and what the page says with its marks. All of it is a contract with the
// authors of pages: spelled exactly so.

/// The id of the page's own close control.
inline constexpr std::string_view kCloseControlId = "cocoa_close_web";

/// Tells whether the page wants to know which applications are installed.
inline constexpr const char* kFilterSupportScript =
    "( (typeof(cocoa_obtain_promo_app_ids) === 'function') && "
    "(typeof(cocoa_post_promo_app_info) === 'function') ) ? 'support' : 'unimplemented';";

/// Asks the page for the bundle identifiers that it promotes.
inline constexpr const char* kListPromoAppsScript = "cocoa_obtain_promo_app_ids();";

/// Hides the element with that id, if the page has one.
std::string hideElementScript(std::string_view elementId);

/// Tells the page about the host and its promoted applications. The lists are array literals;
/// nothing is escaped, as pages expect.
std::string postPromoAppInfoScript(std::string_view hostIdentifier, std::string_view appIds,
                                   std::string_view installFlags);

}  // namespace qorix
