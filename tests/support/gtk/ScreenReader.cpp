#include "support/gtk/ScreenReader.h"

#include <gio/gio.h>

#include <cstdlib>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

const Accessible kDesktop = {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};

std::string textIn(GVariant* tuple) {
  const gchar* text = nullptr;
  g_variant_get_child(tuple, 0, "&s", &text);
  return text;
}

/// Where assistive technology meets applications: a bus beside that of the session.
std::string assistiveBusAddress() {
  GDBusConnection* session = g_dbus_connection_new_for_address_sync(
      std::getenv("DBUS_SESSION_BUS_ADDRESS"),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
  GVariant* answer = g_dbus_connection_call_sync(
      session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
      G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  std::string address = textIn(answer);
  g_variant_unref(answer);
  g_object_unref(session);
  return address;
}

struct Call {
  bool isOver = false;
  GVariant* answer = nullptr;
};

void onAnswer(GObject* connection, GAsyncResult* result, gpointer data) {
  auto* call = static_cast<Call*>(data);
  // What has just gone from the display returns an error.
  call->answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr);
  call->isOver = true;
}

void freeAnswer(GVariant* answer) {
  if (answer != nullptr) {
    g_variant_unref(answer);
  }
}

}  // namespace

AssistiveBus::AssistiveBus() : bus_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  const std::string display = std::getenv("DISPLAY");
  g_test_dbus_add_service_dir(bus_, "/usr/share/dbus-1/services");
  g_test_dbus_up(bus_);  // forgets the display
  setenv("DISPLAY", display.c_str(), 1);
  unsetenv("NO_AT_BRIDGE");
}

AssistiveBus::~AssistiveBus() {
  g_test_dbus_stop(bus_);
  g_object_unref(bus_);
}

ScreenReader::ScreenReader()
    : connection_(g_dbus_connection_new_for_address_sync(
          assistiveBusAddress().c_str(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, nullptr, nullptr)) {}

ScreenReader::~ScreenReader() { g_object_unref(connection_); }

Accessible ScreenReader::find(Role role, const std::string& name,
                              const std::optional<Accessible>& place) const {
  std::optional<Accessible> found;
  std::string seen;
  EXPECT_TRUE(waitFor([&] {
    seen.clear();
    found = look(role, name, place.value_or(kDesktop), seen);
    return found.has_value();
  })) << "nothing of the role "
      << static_cast<std::uint32_t>(role) << " called " << name << " among" << seen;
  return found.value_or(Accessible());
}

std::string ScreenReader::description(const Accessible& seen) const {
  return text(seen, "Description");
}

void ScreenReader::activate(const Accessible& seen) const {
  EXPECT_NE(call(seen, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0)), nullptr);
}

void ScreenReader::focus(const Accessible& seen) const {
  EXPECT_NE(call(seen, "org.a11y.atspi.Component", "GrabFocus"), nullptr);
}

ScreenReader::Answer ScreenReader::call(const Accessible& seen, const char* interface,
                                        const char* method, GVariant* arguments) const {
  if (seen.process.empty()) {  // `find` has failed the test
    return {nullptr, freeAnswer};
  }
  Call call;
  g_dbus_connection_call(connection_, seen.process.c_str(), seen.path.c_str(), interface, method,
                         arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, onAnswer,
                         &call);
  while (!call.isOver) {
    g_main_context_iteration(nullptr, TRUE);
  }
  return {call.answer, freeAnswer};
}

ScreenReader::Answer ScreenReader::property(const Accessible& seen, const char* name) const {
  const Answer answer = call(seen, "org.freedesktop.DBus.Properties", "Get",
                             g_variant_new("(ss)", "org.a11y.atspi.Accessible", name));
  GVariant* value = nullptr;
  if (answer != nullptr) {
    g_variant_get(answer.get(), "(v)", &value);
  }
  return {value, freeAnswer};
}

std::string ScreenReader::text(const Accessible& seen, const char* name) const {
  const Answer value = property(seen, name);
  return value == nullptr ? "" : g_variant_get_string(value.get(), nullptr);
}

std::uint32_t ScreenReader::role(const Accessible& seen) const {
  const Answer answer = call(seen, "org.a11y.atspi.Accessible", "GetRole");
  std::uint32_t role = 0;
  if (answer != nullptr) {
    g_variant_get(answer.get(), "(u)", &role);
  }
  return role;
}

// Asked for all children at once, GTK leaves out the page of a web view.
std::vector<Accessible> ScreenReader::children(const Accessible& seen) const {
  const Answer count = property(seen, "ChildCount");
  std::vector<Accessible> children;
  for (int i = 0; count != nullptr && i < g_variant_get_int32(count.get()); ++i) {
    const Answer child =
        call(seen, "org.a11y.atspi.Accessible", "GetChildAtIndex", g_variant_new("(i)", i));
    if (child != nullptr) {
      const gchar* process = nullptr;
      const gchar* path = nullptr;
      g_variant_get(child.get(), "((&s&o))", &process, &path);
      children.push_back({process, path});
    }
  }
  return children;
}

std::optional<Accessible> ScreenReader::look(Role role, const std::string& name,
                                             const Accessible& place, std::string& seen) const {
  for (const Accessible& each : children(place)) {
    const std::uint32_t itsRole = this->role(each);
    const std::string itsName = text(each, "Name");
    seen += " [" + std::to_string(itsRole) + " " + itsName + "]";
    if (itsRole == static_cast<std::uint32_t>(role) && itsName == name) {
      return each;
    }
    if (auto inside = look(role, name, each, seen)) {
      return inside;
    }
  }
  return std::nullopt;
}

}  // namespace qorix::test
