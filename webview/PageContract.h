#pragma once

#include <string_view>

namespace qorix {

// The names and marks that the library and the authors of pages agree on, each spelled exactly so.

/// The id of the page's own close control.
inline constexpr std::string_view kCloseControlId = "cocoa_close_web";

/// The functions that a page defines in order to learn which applications are installed: the first
/// returns the identifiers it asks about, the second takes what was found out.
inline constexpr std::string_view kObtainPromoAppIds = "cocoa_obtain_promo_app_ids";
inline constexpr std::string_view kPostPromoAppInfo = "cocoa_post_promo_app_info";

/// A mark by which a link asks for an action.
struct LinkMark {
  std::string_view inQuery;
  std::string_view inClass;  // of the clicked element; empty: only the query counts
};
inline constexpr LinkMark kAppStoreMark{"ls=1", ""};
inline constexpr LinkMark kBrowserMark{"zamopenout=1", "zamopenout"};
inline constexpr LinkMark kPurchaseMark{"zamopeniap=1", "zamopeniap"};

}  // namespace qorix
