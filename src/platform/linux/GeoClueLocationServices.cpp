#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/LinuxLocationServices.hpp"

#include <gio/gio.h>

#include <cstring>

namespace tavrin::platform {
namespace {

constexpr const char* geoClue = "org.freedesktop.GeoClue2";
// A location service that does not answer within this is taken as absent.
constexpr int answerLimitMs = 5000;

struct VariantUnref {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using VariantRef = std::unique_ptr<GVariant, VariantUnref>;

VariantRef call(GDBusConnection* bus, const char* service, const char* path, const char* interface,
                const char* method, GVariant* arguments) {
  return VariantRef(g_dbus_connection_call_sync(bus, service, path, interface, method, arguments,
                                                nullptr, G_DBUS_CALL_FLAGS_NONE, answerLimitMs,
                                                nullptr, nullptr));
}

// GeoClue runs, or the bus starts it when a client asks.
bool geoClueAvailable(GDBusConnection* bus) {
  const auto owned = call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                          "org.freedesktop.DBus", "NameHasOwner", g_variant_new("(s)", geoClue));
  gboolean hasOwner = FALSE;
  if (owned) g_variant_get(owned.get(), "(b)", &hasOwner);
  if (hasOwner) return true;
  const auto activatable = call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                "org.freedesktop.DBus", "ListActivatableNames", nullptr);
  if (!activatable) return false;
  GVariantIter* names = nullptr;
  g_variant_get(activatable.get(), "(as)", &names);
  bool found = false;
  const gchar* name = nullptr;
  while (!found && g_variant_iter_loop(names, "&s", &name)) found = std::strcmp(name, geoClue) == 0;
  g_variant_iter_free(names);
  return found;
}

// GeoClue offers a position of some accuracy (its configuration can switch
// every source off, leaving the level at none).
bool geoClueOffersAccuracy(GDBusConnection* bus) {
  const auto level = call(
      bus, geoClue, "/org/freedesktop/GeoClue2/Manager", "org.freedesktop.DBus.Properties", "Get",
      g_variant_new("(ss)", "org.freedesktop.GeoClue2.Manager", "AvailableAccuracyLevel"));
  if (!level) return false;
  GVariant* boxed = nullptr;
  g_variant_get(level.get(), "(v)", &boxed);
  const VariantRef value(boxed);
  return g_variant_is_of_type(value.get(), G_VARIANT_TYPE_UINT32) &&
         g_variant_get_uint32(value.get()) > 0;
}

// The desktop's location switch (GNOME's and Phosh's), where its settings are
// installed; without them GeoClue's own configuration decides alone.
bool desktopSwitchOn() {
  constexpr const char* schemaId = "org.gnome.system.location";
  GSettingsSchemaSource* schemas = g_settings_schema_source_get_default();
  GSettingsSchema* schema =
      schemas != nullptr ? g_settings_schema_source_lookup(schemas, schemaId, TRUE) : nullptr;
  if (schema == nullptr) return true;
  g_settings_schema_unref(schema);
  const GObjectRef<GSettings> settings(g_settings_new(schemaId));
  return g_settings_get_boolean(settings.get(), "enabled") != FALSE;
}

// The location services of GeoClue on the system bus, asked afresh at every
// call. Significant changes can be followed where GeoClue is available (its
// clients set a distance threshold); location is enabled when, besides, it
// offers some accuracy and the desktop's switch is on. There is no compass
// service open to applications (iio-sensor-proxy gives the compass to GeoClue
// alone) and no beacon ranging.
class GeoClueLocationServices final : public LocationServices {
 public:
  bool significantLocationChangeMonitoringAvailable() override {
    const GObjectRef<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return bus && geoClueAvailable(bus.get());
  }
  bool headingAvailable() override { return false; }
  bool isRangingAvailable() override { return false; }
  bool locationServicesEnabled() override {
    const GObjectRef<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return bus && geoClueAvailable(bus.get()) && geoClueOffersAccuracy(bus.get()) &&
           desktopSwitchOn();
  }
};

}  // namespace

std::unique_ptr<LocationServices> makeLinuxLocationServices() {
  return std::make_unique<GeoClueLocationServices>();
}

}  // namespace tavrin::platform
