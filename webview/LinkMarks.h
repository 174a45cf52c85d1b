#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include <qorix/platform/DomNode.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/Value.h>

#include "webview/PageContract.h"

namespace qorix {

/// Whether the query of `url` contains `mark`, in any letter case. A plain search, not a test of a
/// parameter: "ls=1" is also found in "tools=12".
bool queryHoldsMark(const Url& url, std::string_view mark);

/// Whether the element's class attribute contains `mark`, in this letter case.
bool classHoldsMark(const DomHtmlElement& element, std::string_view mark);

/// Whether the navigation came from a link: its type says so, or is missing or unusable.
bool isLinkClick(const Dictionary& actionInformation);

/// Whether the user caused the navigation; also true if that is not known.
bool isUserAct(const Dictionary& actionInformation);

/// The clicked node if it is an HTML element, or the one that the clicked text is directly in; null
/// otherwise.
std::shared_ptr<DomHtmlElement> clickedElement(const Dictionary& actionInformation);

/// Whether the query of `url` or the class of the clicked element contains the mark.
bool linkHoldsMark(const Url& url, const Dictionary& actionInformation, const LinkMark& mark);

/// Whether the clicked node itself is the page's close control; text inside it is not.
bool isCloseControl(const Dictionary& actionInformation);

/// The address with the Mac App Store's scheme in place of its own: "macappstore://" and what
/// follows the last "://". Absent if that is no URL.
std::optional<Url> appStoreUrl(const Url& url);

}  // namespace qorix
