#include "platform/gtk/ResourceInterfaceLoader.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <qorix/MyPushAdBoxView.h>
#include <qorix/platform/Platform.h>

#include "platform/gtk/Accessibility.h"
#include "platform/gtk/AdWebContext.h"
#include "platform/gtk/Desktop.h"
#include "platform/gtk/FileFilter.h"
#include "platform/gtk/Unref.h"
#include "platform/gtk/WebKitView.h"
#include "platform/gtk/WidgetView.h"

// Made by glib-compile-resources. Named here so that a static library keeps the resources.
extern "C" GResource* qorix_gtk3_get_resource();

namespace qorix::gtk {

namespace {

std::optional<Interface> fail(const std::string& name, const std::string& reason) {
  logLine("ZAM Interface file " + name + " cannot be loaded: " + reason);
  return std::nullopt;
}

}  // namespace

ResourceInterfaceLoader::ResourceInterfaceLoader(std::shared_ptr<MainContextRunLoop> runLoop)
    : runLoop_(std::move(runLoop)) {
  qorix_gtk3_get_resource();
}

std::optional<Interface> ResourceInterfaceLoader::load(const std::string& name,
                                                       const Bundle& bundle,
                                                       std::weak_ptr<WebViewDelegate> delegate) {
  if (bundle.executableUrl() != platform().libraryBundle->executableUrl()) {
    return fail(name, "its bundle has no interface files");
  }
  if (!hasDisplay("view")) {
    return std::nullopt;
  }
  g_type_ensure(WEBKIT_TYPE_WEB_VIEW);
  g_type_ensure(WEBKIT_TYPE_SETTINGS);
  const std::unique_ptr<GtkBuilder, Unref> builder(gtk_builder_new());
  gtk_builder_expose_object(builder.get(), "adContext", G_OBJECT(adWebContext()));
  FileFilter::ofLibrary();  // the engine makes it while the web view is made here
  GError* error = nullptr;
  const std::string path = "/qorix/" + name + ".ui";
  if (gtk_builder_add_from_resource(builder.get(), path.c_str(), &error) == 0) {
    const std::string reason = error->message;
    g_error_free(error);
    return fail(name, reason);
  }
  GObject* root = gtk_builder_get_object(builder.get(), "view");
  GObject* webView = gtk_builder_get_object(builder.get(), "webView");
  if (!GTK_IS_OVERLAY(root) || !WEBKIT_IS_WEB_VIEW(webView)) {
    return fail(name, "it lacks the view or the web view");
  }
  int width = 0;
  int height = 0;
  gtk_widget_get_size_request(GTK_WIDGET(root), &width, &height);
  gtk_widget_set_size_request(GTK_WIDGET(root), -1, -1);
  describeHolder(GTK_WIDGET(root), "");
  Interface made;
  made.view =
      makeNativeView<WidgetView<MyPushAdBoxView>>(GTK_WIDGET(root), Ownership::viewOwnsWidget);
  made.view->setFrame({{}, {static_cast<double>(width), static_cast<double>(height)}});
  made.webView = WebKitView::create(WEBKIT_WEB_VIEW(webView), runLoop_, std::move(delegate));
  return made;
}

}  // namespace qorix::gtk
