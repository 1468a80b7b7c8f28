#pragma once

#include "platform/linux/CellularModem.hpp"

#include <tavrin/platform/DeviceInfo.hpp>

#include <string>
#include <vector>

namespace tavrin::platform {

// The system files the device facts come from; tests point them at fixtures.
struct LinuxSystemFiles {
  // os-release candidates, the first readable one wins.
  std::vector<std::string> osRelease{"/etc/os-release", "/usr/lib/os-release"};
  std::string machineId = "/etc/machine-id";
  // Where the hardware names itself: firmware tables on PCs, the device tree on boards.
  std::vector<std::string> model{"/sys/class/dmi/id/product_name", "/proc/device-tree/model"};
};

// The facts of the Linux machine the library runs on.
//
// - model, localized model: the hardware's product name (DMI, else the device
//   tree), else "Linux"; there is no translated form.
// - system name, version: NAME and VERSION_ID of os-release; a distribution that
//   names no version (a rolling release) reports the kernel release instead,
//   and a machine without os-release reports "Linux" and the kernel release.
// - vendor identifier: see VendorIdentifier; absent without a valid machine id.
// - locale and time zone: ICU's defaults, which follow LANG/LC_* and TZ or
//   /etc/localtime. The C and POSIX locales are ICU's "en_US_POSIX", whose
//   conventions are those of American English, and are reported as that locale.
// - storage: statvfs of $HOME (or the user's home from the password database);
//   free bytes are those available to unprivileged users.
// - carrier and radio: the cellular modem's (CellularModem), read at every call.
// - no monitoring; version gates are all open.
// - library bundle: only "SDKIdentifier", when the build sets TAVRIN_SDK_IDENTIFIER.
//
// The model, system and vendor identifier are read once at construction; the
// other facts are read afresh at every call.
class LinuxDeviceInfo final : public DeviceInfo {
 public:
  // `applicationIdentifier` names the host application; empty: the executable's name.
  explicit LinuxDeviceInfo(std::string applicationIdentifier, const LinuxSystemFiles& files = {});

  std::string model() override { return _model; }
  std::string localizedModel() override { return _model; }
  std::string systemName() override { return _systemName; }
  std::string systemVersion() override { return _systemVersion; }
  bool isSystemVersionAtLeast(int, int) override { return true; }
  std::optional<Uuid> identifierForVendor() override { return _identifierForVendor; }
  std::array<std::uint8_t, 256> machine() override;

  bool isBatteryMonitoringEnabled() override { return false; }
  bool isProximityMonitoringEnabled() override { return false; }
  bool isGeneratingDeviceOrientationNotifications() override { return false; }
  bool proximityState() override { return false; }
  bool isMultitaskingSupported() override { return true; }

  std::optional<FileSystemSizes> homeFileSystemSizes() override;
  std::uint64_t physicalMemory() override;
  LocaleFacts currentLocale() override;
  TimeZoneFacts currentTimeZone(double secondsSince1970) override;
  std::optional<Carrier> subscriberCarrier() override { return _modem->carrier(); }
  std::optional<std::string> currentRadioAccessTechnology() override {
    return _modem->radioAccessTechnology();
  }
  std::optional<std::string> libraryBundleString(const std::string& key) override;

 private:
  std::string _model;
  std::string _systemName;
  std::string _systemVersion;
  std::optional<Uuid> _identifierForVendor;
  std::unique_ptr<CellularModem> _modem = makeCellularModem();
};

}  // namespace tavrin::platform
