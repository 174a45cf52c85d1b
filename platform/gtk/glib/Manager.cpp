#include "platform/gtk/glib/Manager.h"

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdManager.h>
#include <qorix/gtk3.h>
#include <qorix/platform/Bundle.h>
#include <qorix/platform/Platform.h>
#include <qorix/qorix-gtk.h>

#include "platform/gtk/WidgetView.h"
#include "platform/gtk/glib/AdInfo.h"
#include "platform/gtk/glib/Results.h"

using qorix::callGuarded;
using qorix::MyPushAdEvent;
using qorix::MyPushAdManager;
using qorix::gtk::guardedResult;
using qorix::gtk::isUtf8OrNull;

struct _QorixManager {
  GObject parent;
};

G_DEFINE_FINAL_TYPE(QorixManager, qorix_manager, G_TYPE_OBJECT)

namespace {

enum Signal { willShow, didClose, openIap, triggeringNavigation, signalCount };
std::array<guint, signalCount> signals{};

QorixManager* theManager = nullptr;  // like the C++ one, it lives until the process ends

/// The widget that the host has offered; the library's own stand-in for one is none.
GtkWidget* hostWidget(const MyPushAdEvent& event) {
  const auto manager = MyPushAdManager::sharedPushAdManager();
  const auto standIn = manager == nullptr ? nullptr : manager->stubMemoryHostWindow();
  if (standIn != nullptr && standIn->contentView() == event.hostView) {
    return nullptr;
  }
  const auto* view = dynamic_cast<const qorix::gtk::NativeView*>(event.hostView.get());
  return view == nullptr ? nullptr : view->widget();
}

std::optional<QorixRect> rectOf(const std::optional<qorix::Rect>& frame) {
  if (!frame) {
    return std::nullopt;
  }
  return QorixRect{frame->origin.x, frame->origin.y, frame->size.width, frame->size.height};
}

/// Frees what is no GObject, for which there is Unref.
template <auto kFree>
struct FreeWith {
  template <class Pointed>
  void operator()(Pointed* pointer) const {
    kFree(pointer);
  }
};
using OwnedText = std::unique_ptr<gchar, FreeWith<g_free>>;
using OwnedInfo = std::unique_ptr<QorixAdInfo, FreeWith<qorix_ad_info_unref>>;

void emitSignal(const MyPushAdEvent& event) {
  const OwnedInfo info(qorix::gtk::newAdInfo(event.info));
  const gboolean isPopup = event.isPopup ? TRUE : FALSE;
  auto rect = rectOf(event.frame);
  QorixRect* frame = rect ? &*rect : nullptr;
  switch (event.kind) {
    case MyPushAdEvent::Kind::willShow:
    case MyPushAdEvent::Kind::didClose: {
      const Signal signal = event.kind == MyPushAdEvent::Kind::willShow ? willShow : didClose;
      g_signal_emit(theManager, signals[signal], 0, info.get(), hostWidget(event), isPopup, frame);
      break;
    }
    case MyPushAdEvent::Kind::openIAP: {
      const OwnedText url(event.url ? qorix::gtk::newText(event.url->absoluteString()) : nullptr);
      g_signal_emit(theManager, signals[openIap], 0, info.get(), hostWidget(event), isPopup, frame,
                    url.get());
      break;
    }
    case MyPushAdEvent::Kind::triggeringNavigation: {
      const OwnedText element(qorix::gtk::newText(event.element));
      g_signal_emit(theManager, signals[triggeringNavigation], 0, element.get());
      break;
    }
  }
}

bool isObserving = false;

/// Observes the platform that is in force, and no other one any more.
void observePlatform() {
  static auto& observations = *new std::vector<qorix::NotificationObservation>();
  observations = MyPushAdEvent::observe(emitSignal);
  isObserving = true;
}

/// There is one manager, also for a language that makes its objects by their type.
GObject* constructManager(GType type, guint count, GObjectConstructParam* properties) {
  if (theManager == nullptr) {
    theManager = QORIX_MANAGER(
        G_OBJECT_CLASS(qorix_manager_parent_class)->constructor(type, count, properties));
  }
  if (!isObserving) {
    callGuarded(observePlatform);
  }
  return G_OBJECT(g_object_ref(theManager));
}

template <class... Types>
guint newSignal(QorixManagerClass* type, const char* name, Types... types) {
  return g_signal_new(name, G_OBJECT_CLASS_TYPE(type), G_SIGNAL_RUN_LAST, 0, nullptr, nullptr,
                      nullptr, G_TYPE_NONE, sizeof...(types), types...);
}

/// Calls `work` with the manager, unless the host has allocated one of its own.
template <class Work>
void withManager(Work work) {
  callGuarded([&] {
    if (const auto manager = MyPushAdManager::sharedPushAdManager()) {
      work(*manager);
    }
  });
}

bool isKnown(QorixFileHostMode mode) {
  return mode == QORIX_FILE_HOST_MODE_WEB_SERVER || mode == QORIX_FILE_HOST_MODE_CLOUD_KIT;
}

bool canShowIn(GtkOverlay* overlay) {
  return overlay == nullptr || (GTK_IS_OVERLAY(overlay) != FALSE &&
                                gtk_widget_in_destruction(GTK_WIDGET(overlay)) == FALSE);
}

}  // namespace

namespace qorix::gtk {

void letManagerListenAgain() {
  if (theManager != nullptr) {
    observePlatform();
  }
}

}  // namespace qorix::gtk

static void qorix_manager_class_init(QorixManagerClass* type) {
  G_OBJECT_CLASS(type)->constructor = constructManager;
  signals[willShow] = newSignal(type, "will-show", QORIX_TYPE_AD_INFO, GTK_TYPE_WIDGET,
                                G_TYPE_BOOLEAN, QORIX_TYPE_RECT);
  signals[didClose] = newSignal(type, "did-close", QORIX_TYPE_AD_INFO, GTK_TYPE_WIDGET,
                                G_TYPE_BOOLEAN, QORIX_TYPE_RECT);
  signals[openIap] = newSignal(type, "open-iap", QORIX_TYPE_AD_INFO, GTK_TYPE_WIDGET,
                               G_TYPE_BOOLEAN, QORIX_TYPE_RECT, G_TYPE_STRING);
  signals[triggeringNavigation] = newSignal(type, "triggering-navigation", G_TYPE_STRING);
}

static void qorix_manager_init(QorixManager* /*self*/) {}

QorixManager* qorix_manager_get_default() {
  return guardedResult<QorixManager*>(nullptr, []() -> QorixManager* {
    if (MyPushAdManager::sharedPushAdManager() == nullptr) {
      return nullptr;
    }
    g_object_unref(g_object_new(QORIX_TYPE_MANAGER, nullptr));
    return theManager;
  });
}

void qorix_manager_configure(QorixManager* self, const gchar* identifier) {
  g_return_if_fail(QORIX_IS_MANAGER(self));
  g_return_if_fail(isUtf8OrNull(identifier));
  withManager([identifier](MyPushAdManager& manager) {
    const auto& installed = qorix::platform().mainBundle;
    manager.configureWithAppBundle(
        identifier == nullptr
            ? installed
            : std::make_shared<const qorix::Bundle>(identifier, installed->executableUrl()));
  });
}

gchar* qorix_manager_dup_app_bundle_identifier(QorixManager* self) {
  g_return_val_if_fail(QORIX_IS_MANAGER(self), nullptr);
  gchar* identifier = nullptr;
  withManager([&identifier](const MyPushAdManager& manager) {
    identifier = qorix::gtk::newText(manager.appBundleIdentifier());
  });
  return identifier;
}

void qorix_manager_show_ad(QorixManager* self, GtkOverlay* overlay, QorixFileHostMode mode,
                           const gchar* address) {
  g_return_if_fail(QORIX_IS_MANAGER(self));
  g_return_if_fail(canShowIn(overlay));
  g_return_if_fail(isKnown(mode));
  g_return_if_fail(isUtf8OrNull(address));
  withManager([=](MyPushAdManager& manager) {
    manager.prepareAndShowAdWithHostView(qorix::gtk::viewForOverlay(overlay),
                                         static_cast<qorix::MyPushAdFileHostMode>(mode),
                                         qorix::gtk::optionalText(address));
  });
}

void qorix_manager_show_ad_of_default_cloud_container(QorixManager* self, GtkOverlay* overlay) {
  g_return_if_fail(QORIX_IS_MANAGER(self));
  g_return_if_fail(canShowIn(overlay));
  withManager([overlay](MyPushAdManager& manager) {
    manager.prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(
        qorix::gtk::viewForOverlay(overlay));
  });
}

void qorix_manager_show_ad_of_default_url(QorixManager* self, GtkOverlay* overlay) {
  g_return_if_fail(QORIX_IS_MANAGER(self));
  g_return_if_fail(canShowIn(overlay));
  withManager([overlay](MyPushAdManager& manager) {
    manager.prepareAndShowAdByUsingMyAppWebServerURLWithHostView(
        qorix::gtk::viewForOverlay(overlay));
  });
}

void qorix_manager_clear_cached_ad_contents(QorixManager* self) {
  g_return_if_fail(QORIX_IS_MANAGER(self));
  withManager([](MyPushAdManager& manager) { manager.clearCachedAdContents(); });
}

QorixAdInfo* qorix_manager_fetch_cached_ad_info(QorixManager* self) {
  g_return_val_if_fail(QORIX_IS_MANAGER(self), nullptr);
  QorixAdInfo* info = nullptr;
  withManager([&info](MyPushAdManager& manager) {
    info = qorix::gtk::newAdInfo(manager.fetchCachedPushAdInfo());
  });
  return info;
}
