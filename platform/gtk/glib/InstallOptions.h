#pragma once

#include <qorix/gtk3.h>
#include <qorix/qorix-gtk.h>

namespace qorix::gtk {

/// What the properties of `options` hold.
const InstallOptions& installOptionsOf(const QorixInstallOptions& options);

}  // namespace qorix::gtk
