#include "platform/gtk/glib/InstallOptions.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

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

// GObject numbers properties from 1. The one that is no text comes last.
constexpr const char* kPublicKeys = "document-public-keys";
constexpr guint kPublicKeysNumber = kOptionProperties.size() + 1;

const OptionProperty& optionProperty(guint number) { return kOptionProperties.at(number - 1); }

void setPublicKeys(InstallOptions& options, const GValue* value) {
  auto** texts = static_cast<gchar**>(g_value_get_boxed(value));
  for (auto** text = texts; text != nullptr && *text != nullptr; ++text) {
    g_return_if_fail(qorix::gtk::isUtf8OrNull(*text));
  }
  callGuarded([&] {
    std::vector<std::string> keys;
    for (; texts != nullptr && *texts != nullptr; ++texts) {
      keys.emplace_back(*texts);
    }
    options.documentPublicKeys = std::move(keys);
  });
}

void getPublicKeys(const InstallOptions& options, GValue* value) {
  GStrvBuilder* builder = g_strv_builder_new();
  for (const std::string& key : options.documentPublicKeys) {
    g_strv_builder_add(builder, key.c_str());
  }
  g_value_take_boxed(value, g_strv_builder_end(builder));
  g_strv_builder_unref(builder);
}

void setOption(GObject* object, guint number, const GValue* value, GParamSpec* property) {
  if (number == kPublicKeysNumber) {
    setPublicKeys(*QORIX_INSTALL_OPTIONS(object)->options, value);
    return;
  }
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
  if (number == kPublicKeysNumber) {
    getPublicKeys(options, value);
    return;
  }
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
  g_object_class_install_property(
      object, kPublicKeysNumber,
      g_param_spec_boxed(kPublicKeys, nullptr, nullptr, G_TYPE_STRV,
                         static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
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
