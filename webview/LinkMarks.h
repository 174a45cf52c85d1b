#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include <qorix/platform/DomNode.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/Value.h>

namespace qorix {

/// A mark by which a link asks for an action.
struct LinkMark {
  std::string_view inQuery;
  std::string_view inClass;  // of the clicked element; empty: only the query is looked at
};
inline constexpr LinkMark kAppStoreMark{"ls=1", ""};
inline constexpr LinkMark kBrowserMark{"zamopenout=1", "zamopenout"};
inline constexpr LinkMark kPurchaseMark{"zamopeniap=1", "zamopeniap"};

/// Whether the query of `url` holds `mark` anywhere, letter case ignored. A plain search, not a
/// test of a parameter: "ls=1" is also found in "tools=12".
bool queryHoldsMark(const Url& url, std::string_view mark);

/// Whether the element's class attribute holds `mark` anywhere, letter case kept.
bool classHoldsMark(const DomHtmlElement& element, std::string_view mark);

/// Whether the navigation came from a link: its type says so, or says nothing usable.
bool isLinkClick(const Dictionary& actionInformation);

/// Whether an act of the user's stands behind the navigation; true also where nobody can tell.
bool isUserAct(const Dictionary& actionInformation);

/// The innermost node under the click; null when there was none.
std::shared_ptr<DomNode> clickedNode(const Dictionary& actionInformation);

/// The clicked node when it is an element, or the element that the clicked text is directly in.
std::shared_ptr<DomHtmlElement> clickedElement(const Dictionary& actionInformation);

/// Whether the query of `url` or the class of the clicked element holds the mark.
bool linkHoldsMark(const Url& url, const Dictionary& actionInformation, const LinkMark& mark);

/// Whether the clicked node itself is the page's close control; text inside of it is not.
bool isCloseControl(const Dictionary& actionInformation);

/// The address with the Mac App Store's scheme in place of its own: "macappstore://" and what
/// follows the last "://". Nothing when that is no URL.
std::optional<Url> appStoreUrl(const Url& url);

}  // namespace qorix
