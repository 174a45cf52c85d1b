#pragma once

#include <memory>

#include <qorix/MyPushAdInfo.h>
#include <qorix/qorix-gtk.h>

namespace qorix::gtk {

/// `record` for C, with one reference; null if the record is.
QorixAdInfo* newAdInfo(std::shared_ptr<const MyPushAdInfo> record);

}  // namespace qorix::gtk
