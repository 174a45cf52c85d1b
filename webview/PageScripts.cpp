#include "webview/PageScripts.h"

namespace qorix {

namespace {

std::string call(std::string_view function, std::string_view arguments) {
  std::string script(function);
  script += '(';
  script += arguments;
  script += ");";
  return script;
}

std::string isFunction(std::string_view name) {
  std::string condition = "(typeof(";
  condition += name;
  condition += ") === 'function')";
  return condition;
}

}  // namespace

std::string filterSupportScript() {
  return "( " + isFunction(kObtainPromoAppIds) + " && " + isFunction(kPostPromoAppInfo) +
         " ) ? 'support' : 'unimplemented';";
}

std::string listPromoAppsScript() { return call(kObtainPromoAppIds, ""); }

std::string hideElementScript(std::string_view elementId) {
  std::string script = "var ele = document.getElementById('";
  script += elementId;
  script += "'); if (ele) { ele.style.display='none'; }";
  return script;
}

std::string postPromoAppInfoScript(std::string_view hostIdentifier, std::string_view appIds,
                                   std::string_view installFlags) {
  std::string arguments = "'";
  arguments += hostIdentifier;
  arguments += "', ";
  arguments += appIds;
  arguments += ", ";
  arguments += installFlags;
  return call(kPostPromoAppInfo, arguments);
}

}  // namespace qorix
