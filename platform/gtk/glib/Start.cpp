#include <qorix/gtk3.h>
#include <qorix/qorix-gtk.h>

#include "platform/gtk/glib/InstallOptions.h"
#include "platform/gtk/glib/Manager.h"
#include "platform/gtk/glib/Results.h"

namespace {

/// Whether `options` say who the host is.
bool nameAHost(const QorixInstallOptions& options) {
  return !qorix::gtk::installOptionsOf(options).bundleIdentifier.empty();
}

}  // namespace

void qorix_install(QorixInstallOptions* options) {
  g_return_if_fail(QORIX_IS_INSTALL_OPTIONS(options));
  g_return_if_fail(nameAHost(*options));
  qorix::callGuarded([options] {
    qorix::gtk::install(qorix::gtk::installOptionsOf(*options));
    qorix::gtk::letManagerListenAgain();
  });
}

QorixManager* qorix_start(QorixInstallOptions* options) {
  g_return_val_if_fail(QORIX_IS_INSTALL_OPTIONS(options), nullptr);
  g_return_val_if_fail(nameAHost(*options), nullptr);
  return qorix::gtk::guardedResult<QorixManager*>(nullptr, [options]() -> QorixManager* {
    const auto manager = qorix::gtk::start(qorix::gtk::installOptionsOf(*options));
    qorix::gtk::letManagerListenAgain();
    return manager == nullptr ? nullptr : qorix_manager_get_default();
  });
}
