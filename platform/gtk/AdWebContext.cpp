#include "platform/gtk/AdWebContext.h"

#include "platform/gtk/PageIsolation.h"
#include "platform/gtk/PageRequests.h"
#include "platform/gtk/WebProcessModule.h"

namespace qorix::gtk {

WebKitWebContext* adWebContext() {
  static WebKitWebContext* const context = [] {
    WebKitWebContext* fresh = newIsolatedWebContext();
    loadModuleIntoWebProcesses(fresh);
    refuseDownloads(fresh);
    return fresh;
  }();
  return context;
}

}  // namespace qorix::gtk
