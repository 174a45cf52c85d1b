#pragma once

/* For hosts. */

/*
 * The C interface of the GTK 3 platform, for programs in C and, by introspection, in Python, Vala,
 * JavaScript and others. It offers to them what a host in C++ uses of <qorix/gtk3.h> and
 * <qorix/qorix.h>, but for one thing: only a host in C++ can keep the settings itself.
 *
 * All calls belong to the main thread unless their description says otherwise. Texts are UTF-8. A
 * call with a wrong argument (none, an empty one or another type where one is needed, no UTF-8)
 * logs one critical message of GLib, does nothing, and returns %NULL or 0. The library reports
 * other faults in log lines of its own. It throws no C++ exception, and no signal handler may let
 * one out.
 */

#include <gtk/gtk.h>

#include <qorix/Export.h>

/* In C++ a value that an enumeration has no name for is undefined, unless its type is given. */
#ifdef __cplusplus
#define QORIX_ENUM_TYPE : int
#else
#define QORIX_ENUM_TYPE
#endif

G_BEGIN_DECLS

/**
 * QorixFileHostMode:
 * @QORIX_FILE_HOST_MODE_WEB_SERVER: the address is a URL
 * @QORIX_FILE_HOST_MODE_CLOUD_KIT: the address is the identifier of a cloud container
 *
 * Where the ad configuration document of a show request is.
 */
typedef enum QORIX_ENUM_TYPE {
  QORIX_FILE_HOST_MODE_WEB_SERVER = 0,
  QORIX_FILE_HOST_MODE_CLOUD_KIT = 1
} QorixFileHostMode;

#define QORIX_TYPE_FILE_HOST_MODE (qorix_file_host_mode_get_type())
QORIX_EXPORT GType qorix_file_host_mode_get_type(void);

/**
 * QorixRect:
 * @x: the distance of the left edge from the origin
 * @y: the distance of the lower edge from the origin
 * @width: the width
 * @height: the height
 *
 * A rectangle in points. The origin is the lower left corner of what the rectangle lies in, and
 * @y grows upwards.
 */
typedef struct {
  gdouble x;
  gdouble y;
  gdouble width;
  gdouble height;
} QorixRect;

#define QORIX_TYPE_RECT (qorix_rect_get_type())
QORIX_EXPORT GType qorix_rect_get_type(void);

/**
 * qorix_rect_copy:
 * @self: a rectangle
 *
 * Copies a rectangle. Any thread.
 *
 * Returns: (transfer full): a copy, which the caller frees with [method@Rect.free]
 */
QORIX_EXPORT QorixRect* qorix_rect_copy(const QorixRect* self);

/**
 * qorix_rect_free:
 * @self: (transfer full): a rectangle
 *
 * Frees a rectangle that [method@Rect.copy] has returned. Any thread.
 */
QORIX_EXPORT void qorix_rect_free(QorixRect* self);

/**
 * QorixAdInfo:
 *
 * The record of one advertisement: its values as the ad configuration document and the
 * customisation for this host give them. A record never changes, and may be read on any thread. It
 * lives as long as somebody holds a reference to it.
 */
typedef struct _QorixAdInfo QorixAdInfo;

#define QORIX_TYPE_AD_INFO (qorix_ad_info_get_type())
QORIX_EXPORT GType qorix_ad_info_get_type(void);

/**
 * qorix_ad_info_ref:
 * @self: a record
 *
 * Adds a reference. Any thread.
 *
 * Returns: (transfer full): the same record
 */
QORIX_EXPORT QorixAdInfo* qorix_ad_info_ref(QorixAdInfo* self);

/**
 * qorix_ad_info_unref:
 * @self: (transfer full): a record
 *
 * Drops a reference; with the last one the record is freed. Any thread.
 */
QORIX_EXPORT void qorix_ad_info_unref(QorixAdInfo* self);

/**
 * qorix_ad_info_parse_document:
 * @document: the text of an ad configuration document
 *
 * Reads the advertisement for this host from a document. Call [func@install] before it, which says
 * who the host is. Any thread.
 *
 * Returns: (transfer full) (nullable): a new record, or %NULL, after one line in the library's log,
 *   if the document cannot be used
 */
QORIX_EXPORT QorixAdInfo* qorix_ad_info_parse_document(const gchar* document);

/**
 * qorix_ad_info_get_ad_id:
 * @self: a record
 *
 * Gets the identifier of the advertisement. Any thread.
 *
 * Returns: the identifier; 1 or more in a sound document
 */
QORIX_EXPORT gint64 qorix_ad_info_get_ad_id(QorixAdInfo* self);

/**
 * qorix_ad_info_get_enable:
 * @self: a record
 *
 * Gets whether the advertisement may be shown at all. Any thread.
 *
 * Returns: %TRUE if it may be shown
 */
QORIX_EXPORT gboolean qorix_ad_info_get_enable(QorixAdInfo* self);

/**
 * qorix_ad_info_get_version:
 * @self: a record
 *
 * Gets the version of the advertisement. Showings are counted for each version. Any thread.
 *
 * Returns: (nullable): the version, which the record owns; if it is empty or %NULL, showings are
 *   not counted
 */
QORIX_EXPORT const gchar* qorix_ad_info_get_version(QorixAdInfo* self);

/**
 * qorix_ad_info_get_embed:
 * @self: a record
 *
 * Gets where the advertisement is shown. Any thread.
 *
 * Returns: 0 for the pop-up window; 1 to 8 for a banner, clockwise from the upper right corner of
 *   the host's widget; more for a banner at its lower left corner; less if it is not shown
 */
QORIX_EXPORT gint64 qorix_ad_info_get_embed(QorixAdInfo* self);

/**
 * qorix_ad_info_get_width:
 * @self: a record
 *
 * Gets the width of the banner or of the pop-up window's content. The pop-up window keeps the size
 * that it has unless width and height are both above 0. Any thread.
 *
 * Returns: the width in points
 */
QORIX_EXPORT gint64 qorix_ad_info_get_width(QorixAdInfo* self);

/**
 * qorix_ad_info_get_height:
 * @self: a record
 *
 * Gets the height of the banner or of the pop-up window's content. The pop-up window keeps the size
 * that it has unless width and height are both above 0. Any thread.
 *
 * Returns: the height in points
 */
QORIX_EXPORT gint64 qorix_ad_info_get_height(QorixAdInfo* self);

/**
 * qorix_ad_info_get_offset_x:
 * @self: a record
 *
 * Gets the distance of a banner from the left or right edge that it is anchored to. Any thread.
 *
 * Returns: the distance in points; 0 unless a customisation sets it
 */
QORIX_EXPORT gint64 qorix_ad_info_get_offset_x(QorixAdInfo* self);

/**
 * qorix_ad_info_get_offset_y:
 * @self: a record
 *
 * Gets the distance of a banner from the upper or lower edge that it is anchored to. Any thread.
 *
 * Returns: the distance in points; 0 unless a customisation sets it
 */
QORIX_EXPORT gint64 qorix_ad_info_get_offset_y(QorixAdInfo* self);

/**
 * qorix_ad_info_get_count:
 * @self: a record
 *
 * Gets how often this version of the advertisement may be shown on one machine. Any thread.
 *
 * Returns: the number of showings
 */
QORIX_EXPORT gint64 qorix_ad_info_get_count(QorixAdInfo* self);

/**
 * qorix_ad_info_get_delay:
 * @self: a record
 *
 * Gets how long the showing waits after the decision to show. Any thread.
 *
 * Returns: the seconds; if negative, the advertisement is never shown
 */
QORIX_EXPORT gint64 qorix_ad_info_get_delay(QorixAdInfo* self);

/**
 * qorix_ad_info_get_notes:
 * @self: a record
 *
 * Gets the author's note. Any thread.
 *
 * Returns: (nullable): the note, which the record owns
 */
QORIX_EXPORT const gchar* qorix_ad_info_get_notes(QorixAdInfo* self);

/**
 * qorix_ad_info_get_advance:
 * @self: a record
 *
 * Gets the customisation for all hosts. Any thread.
 *
 * Returns: (nullable): the customisation as JSON text, which the record owns
 */
QORIX_EXPORT const gchar* qorix_ad_info_get_advance(QorixAdInfo* self);

/**
 * qorix_ad_info_dup_advance_dict:
 * @self: a record
 *
 * Gets the customisation's entry for this host, as a `GVariant` of the type `a{sv}`. Members are
 * booleans (`b`), integers (`x`), fractions (`d`), texts (`s`), lists (`av`) and dictionaries
 * (`a{sv}`); null is an empty maybe (`mv`). Any thread.
 *
 * Returns: (transfer full) (nullable): the entry, empty if the customisation has none for this
 *   host
 */
QORIX_EXPORT GVariant* qorix_ad_info_dup_advance_dict(QorixAdInfo* self);

/**
 * qorix_ad_info_dup_title_languages:
 * @self: a record
 *
 * Lists the language codes under which the record has a title, such as "en" or "default". Any
 * thread.
 *
 * Returns: (transfer full) (array zero-terminated=1): the codes in the order of the document,
 *   which the caller frees with [func@GLib.strfreev]; empty without titles
 */
QORIX_EXPORT gchar** qorix_ad_info_dup_title_languages(QorixAdInfo* self);

/**
 * qorix_ad_info_get_title:
 * @self: a record
 * @language: a language code
 *
 * Gets the title under exactly this code. Any thread.
 *
 * Returns: (nullable): the title, which the record owns, or %NULL if there is none
 */
QORIX_EXPORT const gchar* qorix_ad_info_get_title(QorixAdInfo* self, const gchar* language);

/**
 * qorix_ad_info_dup_html_languages:
 * @self: a record
 *
 * Lists the language codes under which the record has an HTML page, such as "en" or "default". Any
 * thread.
 *
 * Returns: (transfer full) (array zero-terminated=1): the codes in the order of the document,
 *   which the caller frees with [func@GLib.strfreev]; empty without pages
 */
QORIX_EXPORT gchar** qorix_ad_info_dup_html_languages(QorixAdInfo* self);

/**
 * qorix_ad_info_get_html:
 * @self: a record
 * @language: a language code
 *
 * Gets the HTML page under exactly this code. Any thread.
 *
 * Returns: (nullable): the page, which the record owns, or %NULL if there is none
 */
QORIX_EXPORT const gchar* qorix_ad_info_get_html(QorixAdInfo* self, const gchar* language);

/**
 * qorix_ad_info_dup_localized_title:
 * @self: a record
 *
 * Gets the title for the language that the user prefers. Main thread only.
 *
 * Returns: (transfer full) (nullable): the title, or %NULL, after one line in the library's log,
 *   if the record has none for the user
 */
QORIX_EXPORT gchar* qorix_ad_info_dup_localized_title(QorixAdInfo* self);

/**
 * qorix_ad_info_dup_localized_html:
 * @self: a record
 *
 * Gets the HTML page for the language that the user prefers. Main thread only.
 *
 * Returns: (transfer full) (nullable): the page, or %NULL, after one line in the library's log, if
 *   the record has none for the user
 */
QORIX_EXPORT gchar* qorix_ad_info_dup_localized_html(QorixAdInfo* self);

/**
 * QorixInstallOptions:
 *
 * What a host decides about the services that the library uses. Set the properties, then hand the
 * object to [func@start] or [func@install]; later changes have no effect. A property that is set to
 * %NULL has its default again. Main thread only.
 *
 * Settings are kept in a file. Only a host in C++ can keep them itself (`settings` of
 * `qorix::gtk::InstallOptions`).
 */

/**
 * QorixInstallOptions:bundle-identifier:
 *
 * The host's own reverse-DNS name, such as "com.example.editor". Required: options without it are
 * refused with a critical message.
 */

/**
 * QorixInstallOptions:settings-path:
 *
 * The file of the host's settings, a file name. Empty for the usual place in the user's
 * configuration folder, one file for each bundle identifier.
 */

/**
 * QorixInstallOptions:applications-directory:
 *
 * The folder whose items are the installed applications, a file name. By default
 * "/usr/share/applications".
 */

/**
 * QorixInstallOptions:default-ad-file-url:
 *
 * The URL of the ad configuration document, for [method@Manager.show_ad_of_default_url].
 */

/**
 * QorixInstallOptions:default-cloud-container-identifier:
 *
 * The cloud container with the document, "iCloud." and a reverse-DNS name, for
 * [method@Manager.show_ad_of_default_cloud_container].
 */

/**
 * QorixInstallOptions:cloud-service-address:
 *
 * Where cloud containers are reached: an https URL, or an http one for a server of the host's own.
 * Empty for the public service.
 */

/**
 * QorixInstallOptions:cloud-environment:
 *
 * "development" or "production". Empty is production.
 */

/**
 * QorixInstallOptions:cloud-api-token:
 *
 * The API token of the cloud container. Without it nothing is read from a container.
 */

/**
 * QorixInstallOptions:document-public-keys:
 *
 * Whose documents are accepted: Ed25519 public keys, each 32 bytes in base64, as `qorix-sign
 * keygen` prints them. %NULL or empty: everybody's. A document that none of them has signed is a
 * failed fetch, with one log line that says why.
 */

#define QORIX_TYPE_INSTALL_OPTIONS (qorix_install_options_get_type())
QORIX_EXPORT
G_DECLARE_FINAL_TYPE(QorixInstallOptions, qorix_install_options, QORIX, INSTALL_OPTIONS, GObject)

/**
 * qorix_install_options_new:
 * @identifier: the host's own reverse-DNS name, such as "com.example.editor"; not empty
 *
 * Makes options with defaults for everything else. Main thread only.
 *
 * Returns: (transfer full): new options
 */
QORIX_EXPORT QorixInstallOptions* qorix_install_options_new(const gchar* identifier);

/**
 * QorixManager:
 *
 * The library's one manager. A host configures it (which [func@start] does), connects to its
 * signals, and asks once for each widget in which an advertisement may appear. The rest happens by
 * itself: the manager fetches the document, tries again every 60 seconds until that succeeds,
 * decides, and shows. Main thread only.
 *
 * Get it by [func@start] or [func@Manager.get_default]. A language that constructs one instead, as
 * `Qorix.Manager()` does, gets the same object.
 */

/**
 * QorixManager::will-show:
 * @self: the manager
 * @info: (nullable): the record of the advertisement; %NULL only if C++ code of this process has
 *   posted the notification itself, without it
 * @host: (nullable): the widget that the advertisement was offered to; %NULL if it has been
 *   destroyed, or none was offered
 * @is_popup: whether the advertisement is in the pop-up window
 * @frame: (nullable): where the advertisement is: a banner in @host, the pop-up window's content on
 *   the screen
 *
 * Emitted for each showing, on a later pass of the main loop: the banner or the pop-up window is
 * there by then, its page may still be loading.
 */

/**
 * QorixManager::did-close:
 * @self: the manager
 * @info: (nullable): the record of the advertisement; %NULL only if C++ code of this process has
 *   posted the notification itself, without it
 * @host: (nullable): the widget that the advertisement was offered to; %NULL if it has been
 *   destroyed, or none was offered
 * @is_popup: whether the advertisement was in the pop-up window
 * @frame: (nullable): where the advertisement was: a banner in @host, the pop-up window's content
 *   on the screen
 *
 * Emitted when the user has closed an advertisement.
 */

/**
 * QorixManager::open-iap:
 * @self: the manager
 * @info: (nullable): the record of the advertisement; %NULL only if C++ code of this process has
 *   posted the notification itself, without it
 * @host: (nullable): the widget that the advertisement was offered to; %NULL if it has been
 *   destroyed, or none was offered
 * @is_popup: whether the advertisement is in the pop-up window
 * @frame: (nullable): where the advertisement is: a banner in @host, the pop-up window's content on
 *   the screen
 * @url: (nullable): the address of the purchase
 *
 * Emitted when a page asks the host to offer an in-app purchase. @url is %NULL in the same case as
 * @info.
 */

/**
 * QorixManager::triggering-navigation:
 * @self: the manager
 * @element: (nullable): the activated element, "{(idName is buy)(className is cta)}"
 *
 * Emitted when the user has activated a link in a page, whatever becomes of it. @element is %NULL
 * only if C++ code of this process has posted the notification itself, without it.
 */

#define QORIX_TYPE_MANAGER (qorix_manager_get_type())
QORIX_EXPORT
G_DECLARE_FINAL_TYPE(QorixManager, qorix_manager, QORIX, MANAGER, GObject)

/**
 * qorix_manager_get_default:
 *
 * Gets the one manager. Call [func@start] or [func@install] before.
 *
 * Returns: (transfer none) (nullable): the manager, which lives until the process ends, or %NULL,
 *   after one line in the library's log, if C++ code of this process has allocated a manager of its
 *   own before
 */
QORIX_EXPORT QorixManager* qorix_manager_get_default(void);

/**
 * qorix_manager_configure:
 * @self: the manager
 * @identifier: (nullable): the host's reverse-DNS name, or %NULL for that of the install
 *   options
 *
 * Tells the manager who the host is; a later call replaces the name. Pages are told this name.
 * Which advertisement is chosen follows [property@InstallOptions:bundle-identifier] alone. Show
 * requests without a name log a warning in the library's log.
 */
QORIX_EXPORT void qorix_manager_configure(QorixManager* self, const gchar* identifier);

/**
 * qorix_manager_dup_app_bundle_identifier:
 * @self: the manager
 *
 * Gets who the host is. Any thread.
 *
 * Returns: (transfer full) (nullable): the host's reverse-DNS name, or %NULL until the manager is
 *   configured
 */
QORIX_EXPORT gchar* qorix_manager_dup_app_bundle_identifier(QorixManager* self);

/**
 * qorix_manager_show_ad:
 * @self: the manager
 * @overlay: (nullable): where a banner may appear, above the overlay's main child; %NULL if the
 *   host only wants the pop-up window
 * @mode: where the document is
 * @address: (nullable): the address of the document: a URL, or the identifier of a cloud container
 *
 * Requests the advertisement for @overlay and returns at once. It appears later, when the document
 * is there, if it is due; [signal@Manager::will-show] says so. The overlay is not kept alive: once
 * it is destroyed, no banner appears.
 *
 * The first request of the process starts the one download and fixes @mode and @address for the
 * process; those of later requests are ignored. If its @address is %NULL or malformed, the
 * download ends silently, and only a document that an earlier run has kept is shown. A URL that
 * cannot be fetched is tried again every 60 seconds.
 *
 * Call this once for each overlay. An overlay that is being destroyed, and an unknown @mode, are
 * refused with a critical message; such a request counts as none.
 */
QORIX_EXPORT void qorix_manager_show_ad(QorixManager* self, GtkOverlay* overlay,
                                        QorixFileHostMode mode, const gchar* address);

/**
 * qorix_manager_show_ad_of_default_cloud_container:
 * @self: the manager
 * @overlay: (nullable): as in [method@Manager.show_ad]
 *
 * Does what [method@Manager.show_ad] does, with the container of
 * [property@InstallOptions:default-cloud-container-identifier]. Without one, one line is logged in
 * the library's log, and the request goes on with the address %NULL.
 */
QORIX_EXPORT void qorix_manager_show_ad_of_default_cloud_container(QorixManager* self,
                                                                   GtkOverlay* overlay);

/**
 * qorix_manager_show_ad_of_default_url:
 * @self: the manager
 * @overlay: (nullable): as in [method@Manager.show_ad]
 *
 * Does what [method@Manager.show_ad] does, with the URL of
 * [property@InstallOptions:default-ad-file-url]. Without one, one line is logged in the library's
 * log, and the request goes on with the address %NULL.
 */
QORIX_EXPORT void qorix_manager_show_ad_of_default_url(QorixManager* self, GtkOverlay* overlay);

/**
 * qorix_manager_clear_cached_ad_contents:
 * @self: the manager
 *
 * Forgets the last good document, which the host's settings keep. What is loaded in this run stays
 * in force.
 */
QORIX_EXPORT void qorix_manager_clear_cached_ad_contents(QorixManager* self);

/**
 * qorix_manager_fetch_cached_ad_info:
 * @self: the manager
 *
 * Reads the last good document, which the host's settings keep, anew.
 *
 * Returns: (transfer full) (nullable): a new record, or %NULL if there is no document, or, after
 *   one line in the library's log, if it cannot be used
 */
QORIX_EXPORT QorixAdInfo* qorix_manager_fetch_cached_ad_info(QorixManager* self);

/**
 * qorix_install:
 * @options: the host's decisions
 *
 * Puts the services of a GTK desktop in force for the whole process. Call it once, after
 * [func@Gtk.init] and before anything else of the library. It is never undone: a second call is
 * refused with one line in the library's log. Without a display one line is logged, and nothing is
 * shown later. Main thread only.
 */
QORIX_EXPORT void qorix_install(QorixInstallOptions* options);

/**
 * qorix_start:
 * @options: the host's decisions
 *
 * Does what [func@install] does, and tells the manager who the host is. Main thread only.
 *
 * Returns: (transfer none) (nullable): the manager, which lives until the process ends, or %NULL,
 *   after one line in the library's log, if C++ code of this process has allocated a manager of its
 *   own before
 */
QORIX_EXPORT QorixManager* qorix_start(QorixInstallOptions* options);

/**
 * qorix_version_number:
 *
 * Gets the version of the library. Any thread.
 *
 * Returns: the version, such as 2.0
 */
QORIX_EXPORT gdouble qorix_version_number(void);

/**
 * qorix_version_string:
 *
 * Gets the version as the library's file has it for what(1). Any thread.
 *
 * Returns: (transfer none): "@(#)PROGRAM:QORIX  PROJECT:QORIX-2" and a newline, which the library
 *   owns
 */
QORIX_EXPORT const gchar* qorix_version_string(void);

/**
 * qorix_framework_info:
 *
 * Describes the library in one line: its internal version, which is independent of
 * [func@version_number], and the time of its build. Any thread.
 *
 * Returns: (transfer full) (nullable): the line, or %NULL if there is no memory for it
 */
QORIX_EXPORT gchar* qorix_framework_info(void);

/**
 * qorix_compile_date_time:
 *
 * Says when the library was built, such as "QORIX compile on [Jan  5 2024 - 09:41:07]": in the
 * builder's time zone, or in UTC if the build was given SOURCE_DATE_EPOCH. Any thread.
 *
 * Returns: (transfer full) (nullable): the text, or %NULL if there is no memory for it
 */
QORIX_EXPORT gchar* qorix_compile_date_time(void);

G_DEFINE_AUTOPTR_CLEANUP_FUNC(QorixAdInfo, qorix_ad_info_unref)
G_DEFINE_AUTOPTR_CLEANUP_FUNC(QorixRect, qorix_rect_free)

G_END_DECLS
