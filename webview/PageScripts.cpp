#include "webview/PageScripts.h"

namespace qorix {

std::string hideElementScript(std::string_view elementId) {
  std::string script = "var ele = document.getElementById('";
  script += elementId;
  script += "'); if (ele) { ele.style.display='none'; }";
  return script;
}

std::string postPromoAppInfoScript(std::string_view hostIdentifier, std::string_view appIds,
                                   std::string_view installFlags) {
  std::string script = "cocoa_post_promo_app_info('";
  script += hostIdentifier;
  script += "', ";
  script += appIds;
  script += ", ";
  script += installFlags;
  script += ");";
  return script;
}

}  // namespace qorix
