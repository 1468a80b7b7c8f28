// The Linux platform reads the carrier from ModemManager and the location
// services from GeoClue, both played by python-dbusmock templates on the
// private bus (which stands in for the system bus here), into the rows of a
// device profile that describes the same modem and services.

#include "extractors/GeneralDataExtractor.hpp"
#include "extractors/GeoDataExtractor.hpp"
#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/LinuxPlatform.hpp"

#include "SectionJson.hpp"

#include <gio/gio.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace tavrin {
namespace {

using Json = nlohmann::json;
using platform::GObjectRef;

struct Waiting {
  GMainLoop* loop;
  bool appeared = false;
};

// A mock service from one of the templates beside this file, running until
// the object goes.
class MockService {
 public:
  MockService(const std::string& name, const char* busName, const Json& parameters) {
    const std::string templatePath = TAVRIN_LINUX_TEST_DIR "/" + name + ".py";
    const std::string arguments = parameters.dump();
    const char* command[] = {
        TAVRIN_PYTHON3,       "-m", "dbusmock",        "--system", "--template",
        templatePath.c_str(), "-p", arguments.c_str(), nullptr};
    _process.reset(g_subprocess_newv(command, G_SUBPROCESS_FLAGS_STDOUT_SILENCE, nullptr));
    if (_process) waitFor(busName);
  }
  ~MockService() {
    if (!_process) return;
    g_subprocess_force_exit(_process.get());
    g_subprocess_wait(_process.get(), nullptr, nullptr);
  }
  MockService(const MockService&) = delete;
  MockService& operator=(const MockService&) = delete;

 private:
  // Until the service owns its name, or for half a minute.
  static void waitFor(const char* busName) {
    Waiting waiting{g_main_loop_new(nullptr, FALSE)};
    const guint watch = g_bus_watch_name(
        G_BUS_TYPE_SYSTEM, busName, G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, const gchar*, gpointer data) {
          auto& w = *static_cast<Waiting*>(data);
          w.appeared = true;
          g_main_loop_quit(w.loop);
        },
        nullptr, &waiting, nullptr);
    const guint limit = g_timeout_add_seconds(
        30,
        [](gpointer data) {
          g_main_loop_quit(static_cast<Waiting*>(data)->loop);
          return G_SOURCE_REMOVE;
        },
        &waiting);
    g_main_loop_run(waiting.loop);
    if (waiting.appeared) g_source_remove(limit);
    g_bus_unwatch_name(watch);
    g_main_loop_unref(waiting.loop);
    ASSERT_TRUE(waiting.appeared) << busName << " did not start";
  }

  GObjectRef<GSubprocess> _process;
};

// One machine's services (linux/carrier-and-location.json): ModemManager's and
// GeoClue's template parameters (null: not running), GNOME's location switch,
// and the profile's device and location that describe the same.
class CarrierAndLocation : public testing::TestWithParam<Json> {};

// The values of the general-data section that describe the network.
Json networkValues(platform::Platform& phone) {
  const Json all = sectionValues(GeneralDataExtractor("GeneralData", phone).extract());
  return Json(all.begin() + 25, all.begin() + 31);
}

TEST_P(CarrierAndLocation, RowsMatchTheProfileOfTheSameServices) {
  const Json& c = GetParam();
  // The mock services stand on the private bus; so does the library's system bus.
  setenv("DBUS_SYSTEM_BUS_ADDRESS", std::getenv("DBUS_SESSION_BUS_ADDRESS"), 1);
  const GObjectRef<GSettings> settings(g_settings_new("org.gnome.system.location"));
  g_settings_set_boolean(settings.get(), "enabled", c.at("desktopSwitch").get<bool>());
  std::optional<MockService> modem, geoClue;
  if (!c.at("modem").is_null()) {
    modem.emplace("modemmanager", "org.freedesktop.ModemManager1", c.at("modem"));
  }
  if (!c.at("geoClue").is_null())
    geoClue.emplace("geoclue", "org.freedesktop.GeoClue2", c.at("geoClue"));
  ASSERT_FALSE(HasFatalFailure());

  Json description = {{"device", c.at("device")}, {"location", c.at("location")}};
  description["device"]["systemVersion"] = "14.2";
  const std::string file = std::string(std::getenv("HOME")) + "/profile.json";
  std::ofstream(file) << description;
  const auto profile = platform::loadDeviceProfile(file);
  platform::LinuxPlatform phone("network-test");
  EXPECT_EQ(networkValues(phone), networkValues(*profile));
  EXPECT_EQ(sectionValues(GeoDataExtractor("GeoInfo", phone).extract()),
            sectionValues(GeoDataExtractor("GeoInfo", *profile).extract()));
}

INSTANTIATE_TEST_SUITE_P(
    Services, CarrierAndLocation,
    testing::ValuesIn(Json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR
                                                "/linux/carrier-and-location.json"))),
    [](const auto& test) { return test.param.at("name").template get<std::string>(); });

}  // namespace
}  // namespace tavrin
