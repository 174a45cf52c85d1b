#pragma once

#include <memory>
#include <string>
#include <utility>

#include <qorix/platform/DomNode.h>
#include <qorix/platform/WebView.h>

namespace qorix {

inline std::shared_ptr<DomNode> htmlElement(const std::string& idName,
                                            const std::string& className) {
  return std::make_shared<DomHtmlElement>(idName, className);
}

inline std::shared_ptr<DomNode> textIn(std::shared_ptr<DomNode> parent) {
  return std::make_shared<DomText>(std::move(parent));
}

/// What a web view says of a click on a link that hit `node`.
inline Dictionary click(const std::shared_ptr<DomNode>& node) {
  return {{kWebActionNavigationTypeKey, 0},
          {kWebActionElementKey, Dictionary{{kWebElementDomNodeKey, node}}}};
}

}  // namespace qorix
