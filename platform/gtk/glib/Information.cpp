#include <qorix/QORIXCommonUtil.h>
#include <qorix/QORIXInfo.h>
#include <qorix/QORIXVersion.h>
#include <qorix/qorix-gtk.h>

#include "platform/gtk/glib/Results.h"

gdouble qorix_version_number() { return QORIXVersionNumber; }

const gchar* qorix_version_string() { return QORIXVersionString; }

gchar* qorix_framework_info() {
  return qorix::gtk::guardedResult<gchar*>(
      nullptr, [] { return qorix::gtk::newText(qorix::QORIXInfo::frameworkInfoString()); });
}

gchar* qorix_compile_date_time() {
  return qorix::gtk::guardedResult<gchar*>(nullptr, [] {
    return qorix::gtk::newText(qorix::QORIXCommonUtil::fetchQORIXCompileDateTimeString());
  });
}
