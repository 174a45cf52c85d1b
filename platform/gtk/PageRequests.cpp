#include "platform/gtk/PageRequests.h"

#include <webkit2/webkit2.h>

#include <initializer_list>

namespace qorix::gtk {

namespace {

gboolean refuse() { return TRUE; }

gboolean answerScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog) {
  if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
    webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
  }
  return TRUE;
}

gboolean denyPermission(WebKitWebView*, WebKitPermissionRequest* request) {
  webkit_permission_request_deny(request);
  return TRUE;
}

gboolean cancelAuthentication(WebKitWebView*, WebKitAuthenticationRequest* request) {
  webkit_authentication_request_cancel(request);
  return TRUE;
}

gboolean cancelFileChooser(WebKitWebView*, WebKitFileChooserRequest* request) {
  webkit_file_chooser_request_cancel(request);
  return TRUE;
}

gboolean cancelColorChooser(WebKitWebView*, WebKitColorChooserRequest* request) {
  webkit_color_chooser_request_cancel(request);
  return TRUE;
}

void cancelDownload(WebKitWebContext*, WebKitDownload* download) {
  webkit_download_cancel(download);
}

}  // namespace

void refuseRequests(WebKitWebView* webView) {
  for (const char* signal : {"context-menu", "print", "enter-fullscreen", "show-notification"}) {
    g_signal_connect(webView, signal, G_CALLBACK(refuse), nullptr);
  }
  g_signal_connect(webView, "script-dialog", G_CALLBACK(answerScriptDialog), nullptr);
  g_signal_connect(webView, "permission-request", G_CALLBACK(denyPermission), nullptr);
  g_signal_connect(webView, "authenticate", G_CALLBACK(cancelAuthentication), nullptr);
  g_signal_connect(webView, "run-file-chooser", G_CALLBACK(cancelFileChooser), nullptr);
  g_signal_connect(webView, "run-color-chooser", G_CALLBACK(cancelColorChooser), nullptr);
}

void refuseDownloads(WebKitWebContext* context) {
  g_signal_connect(context, "download-started", G_CALLBACK(cancelDownload), nullptr);
}

}  // namespace qorix::gtk
