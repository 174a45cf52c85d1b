// Small types that C code uses as plain values.

#include <qorix/MyPushAdManager.h>
#include <qorix/qorix-gtk.h>

static_assert(int{QORIX_FILE_HOST_MODE_WEB_SERVER} == int{qorix::MyPushAdFileHostModeWebServer});
static_assert(int{QORIX_FILE_HOST_MODE_CLOUD_KIT} == int{qorix::MyPushAdFileHostModeCloudKit});

GType qorix_file_host_mode_get_type() {
  static const GEnumValue kModes[] = {
      {QORIX_FILE_HOST_MODE_WEB_SERVER, "QORIX_FILE_HOST_MODE_WEB_SERVER", "web-server"},
      {QORIX_FILE_HOST_MODE_CLOUD_KIT, "QORIX_FILE_HOST_MODE_CLOUD_KIT", "cloud-kit"},
      {0, nullptr, nullptr},
  };
  static const GType kType = g_enum_register_static("QorixFileHostMode", kModes);
  return kType;
}

G_DEFINE_BOXED_TYPE(QorixRect, qorix_rect, qorix_rect_copy, qorix_rect_free)

QorixRect* qorix_rect_copy(const QorixRect* self) {
  g_return_val_if_fail(self != nullptr, nullptr);
  auto* copy = g_new(QorixRect, 1);
  *copy = *self;
  return copy;
}

void qorix_rect_free(QorixRect* self) {
  g_return_if_fail(self != nullptr);
  g_free(self);
}
