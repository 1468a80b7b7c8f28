#pragma once

#include "platform/profile/DeviceProfile.hpp"

namespace tavrin::platform {

// The device facts of a profile, answered as given; they never change.
class ProfileDeviceInfo final : public DeviceInfo {
 public:
  explicit ProfileDeviceInfo(ProfileDevice device) : _device(std::move(device)) {}

  std::string model() override { return _device.model; }
  std::string localizedModel() override { return _device.localizedModel; }
  std::string systemName() override { return _device.systemName; }
  std::string systemVersion() override { return _device.systemVersion; }
  // Compares numerically, part by part; a missing part counts as 0 ("14" is 14.0).
  bool isSystemVersionAtLeast(int major, int minor) override;
  std::optional<Uuid> identifierForVendor() override { return _device.identifierForVendor; }
  std::array<std::uint8_t, 256> machine() override { return _device.machine; }

  bool isBatteryMonitoringEnabled() override { return _device.isBatteryMonitoringEnabled; }
  bool isProximityMonitoringEnabled() override { return _device.isProximityMonitoringEnabled; }
  bool isGeneratingDeviceOrientationNotifications() override {
    return _device.isGeneratingDeviceOrientationNotifications;
  }
  bool proximityState() override { return _device.proximityState; }
  bool isMultitaskingSupported() override { return _device.isMultitaskingSupported; }

  std::optional<FileSystemSizes> homeFileSystemSizes() override { return _device.fileSystem; }
  std::uint64_t physicalMemory() override { return _device.physicalMemory; }
  LocaleFacts currentLocale() override { return _device.locale; }
  // The profile's zone and abbreviation, whatever the moment.
  TimeZoneFacts currentTimeZone(double) override { return _device.timeZone; }
  std::optional<Carrier> subscriberCarrier() override { return _device.carrier; }
  std::optional<std::string> currentRadioAccessTechnology() override {
    return _device.radioAccessTechnology;
  }
  std::optional<std::string> libraryBundleString(const std::string& key) override;

  // The zone a floating recurring event is expanded in.
  const std::string& timeZoneIdentifier() const { return _device.timeZone.identifier; }

 private:
  ProfileDevice _device;
};

}  // namespace tavrin::platform
