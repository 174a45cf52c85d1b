#pragma once

#include <qorix/platform/Workspace.h>

namespace qorix::gtk {

/// Opens addresses with the programs that the user's desktop has registered for their schemes.
class DesktopWorkspace : public Workspace {
 public:
  void openUrl(const Url& url) override;
};

}  // namespace qorix::gtk
