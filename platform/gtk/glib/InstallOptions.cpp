#include "platform/gtk/glib/InstallOptions.h"

#include <array>
#include <string>

#include "platform/gtk/glib/Results.h"

using qorix::callGuarded;
using qorix::gtk::InstallOptions;

struct _QorixInstallOptions {
  GObject parent;
  InstallOptions* options;
};

G_DEFINE_FINAL_TYPE(QorixInstallOptions, qorix_install_options, G_TYPE_OBJECT)

namespace {

/// A property is a member. File names are bytes, all else is UTF-8.
struct OptionProperty {
  const char* name;
  std::string InstallOptions::*member;
  bool isFileName = false;
};

constexpr std::array<OptionProperty, 8> kOptionProperties{{
    {"bundle-identifier", &InstallOptions::bundleIdentifier},
    {"settings-path", &InstallOptions::settingsPath, true},
    {"applications-directory", &InstallOptions::applicationsDirectory, true},
    {"default-ad-file-url", &InstallOptions::defaultAdFileUrl},
    {"default-cloud-container-identifier", &InstallOptions::defaultCloudContainerIdentifier},
    {"cloud-service-address", &InstallOptions::cloudServiceAddress},
    {"cloud-environment", &InstallOptions::cloudEnvironment},
    {"cloud-api-token", &InstallOptions::cloudApiToken},
}};

// GObject numbers properties from 1.
const OptionProperty& optionProperty(guint number) { return kOptionProperties.at(number - 1); }

void setOption(GObject* object, guint number, const GValue* value, GParamSpec* property) {
  const OptionProperty& option = optionProperty(number);
  const gchar* text = g_value_get_string(value);
  g_return_if_fail(option.isFileName || qorix::gtk::isUtf8OrNull(text));
  callGuarded([&] {
    QORIX_INSTALL_OPTIONS(object)->options->*option.member =
        text == nullptr ? G_PARAM_SPEC_STRING(property)->default_value : text;
  });
}

void getOption(GObject* object, guint number, GValue* value, GParamSpec* /*property*/) {
  const InstallOptions& options = *QORIX_INSTALL_OPTIONS(object)->options;
  g_value_set_string(value, (options.*optionProperty(number).member).c_str());
}

void finalizeOptions(GObject* object) {
  delete QORIX_INSTALL_OPTIONS(object)->options;
  G_OBJECT_CLASS(qorix_install_options_parent_class)->finalize(object);
}

}  // namespace

static void qorix_install_options_class_init(QorixInstallOptionsClass* type) {
  GObjectClass* object = G_OBJECT_CLASS(type);
  object->set_property = setOption;
  object->get_property = getOption;
  object->finalize = finalizeOptions;
  const InstallOptions defaults;
  guint number = 0;
  for (const auto& option : kOptionProperties) {
    g_object_class_install_property(
        object, ++number,
        g_param_spec_string(option.name, nullptr, nullptr, (defaults.*option.member).c_str(),
                            static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
  }
}

static void qorix_install_options_init(QorixInstallOptions* self) {
  self->options = new InstallOptions();
}

QorixInstallOptions* qorix_install_options_new(const gchar* identifier) {
  g_return_val_if_fail(qorix::gtk::isUtf8(identifier), nullptr);
  g_return_val_if_fail(*identifier != '\0', nullptr);
  return QORIX_INSTALL_OPTIONS(
      g_object_new(QORIX_TYPE_INSTALL_OPTIONS, "bundle-identifier", identifier, nullptr));
}

namespace qorix::gtk {

const InstallOptions& installOptionsOf(const QorixInstallOptions& options) {
  return *options.options;
}

}  // namespace qorix::gtk
