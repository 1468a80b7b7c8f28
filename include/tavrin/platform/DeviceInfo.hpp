#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace tavrin::platform {

/// A 128-bit identifier in byte order (the first byte is written first).
using Uuid = std::array<std::uint8_t, 16>;

/// Sizes of the file system that holds the home directory; an entry the
/// system does not give is absent.
struct FileSystemSizes {
  std::optional<std::int64_t> size;      ///< Total bytes.
  std::optional<std::int64_t> freeSize;  ///< Free bytes.
};

/// Facts of the user's current locale; absent where the locale has none.
struct LocaleFacts {
  std::optional<std::string> languageCode;         ///< For example "en".
  std::optional<std::string> regionCode;           ///< For example "US".
  std::optional<std::string> currencyCode;         ///< For example "USD".
  std::optional<std::string> currencySymbol;       ///< For example "$".
  std::string identifier;                          ///< For example "en_US".
  std::optional<std::string> collatorIdentifier;   ///< For example "en-US".
  std::optional<std::string> collationIdentifier;  ///< For example "standard".
  std::optional<std::string> scriptCode;           ///< For example "Latn".
  bool usesMetricSystem = false;                   ///< Whether the metric system is in use.
};

/// The current time zone at a given moment.
struct TimeZoneFacts {
  std::string identifier;                   ///< IANA name, for example "Europe/Berlin".
  std::optional<std::string> abbreviation;  ///< Short name at that moment, for example "CET".
};

/// The subscriber's cellular carrier.
struct Carrier {
  bool allowsVOIP = false;                       ///< Whether the carrier allows voice over IP.
  std::optional<std::string> carrierName;        ///< For example "Telekom".
  std::optional<std::string> isoCountryCode;     ///< For example "de".
  std::optional<std::string> mobileCountryCode;  ///< For example "262".
  std::optional<std::string> mobileNetworkCode;  ///< For example "01".
};

/// Facts of the device, its system, storage, memory, locale, time zone and
/// carrier. Every call answers at once, on the calling thread.
class DeviceInfo {
 public:
  virtual ~DeviceInfo() = default;

  /// The device family, for example "iPhone".
  virtual std::string model() = 0;
  /// The device family in the user's language.
  virtual std::string localizedModel() = 0;
  /// The operating system's name, for example "iOS".
  virtual std::string systemName() = 0;
  /// The operating system's version, for example "14.2".
  virtual std::string systemVersion() = 0;
  /// Whether the running system is at least the given version (for version gates).
  virtual bool isSystemVersionAtLeast(int major, int minor) = 0;
  /// The identifier for the app's vendor on this device; absent when there is none.
  virtual std::optional<Uuid> identifierForVendor() = 0;
  /// The `machine` field of `uname`: 256 bytes, zero-padded.
  virtual std::array<std::uint8_t, 256> machine() = 0;

  virtual bool isBatteryMonitoringEnabled() = 0;                  ///< Battery monitoring on.
  virtual bool isProximityMonitoringEnabled() = 0;                ///< Proximity monitoring on.
  virtual bool isGeneratingDeviceOrientationNotifications() = 0;  ///< Orientation events on.
  virtual bool proximityState() = 0;           ///< The proximity sensor is close to the user.
  virtual bool isMultitaskingSupported() = 0;  ///< The system supports multitasking.

  /// Sizes of the home directory's file system, or absent when the query fails.
  virtual std::optional<FileSystemSizes> homeFileSystemSizes() = 0;
  /// Bytes of physical memory.
  virtual std::uint64_t physicalMemory() = 0;
  /// The user's current locale.
  virtual LocaleFacts currentLocale() = 0;
  /// The current time zone, with its abbreviation at `secondsSince1970`.
  virtual TimeZoneFacts currentTimeZone(double secondsSince1970) = 0;
  /// The subscriber's carrier, or absent when the device reports none.
  virtual std::optional<Carrier> subscriberCarrier() = 0;
  /// The radio access technology in use, as the platform names it, or absent.
  virtual std::optional<std::string> currentRadioAccessTechnology() = 0;
  /// The library bundle's information entry for `key` when it is a string; absent
  /// when the entry, or the whole information dictionary, is missing or not text.
  virtual std::optional<std::string> libraryBundleString(const std::string& key) = 0;
};

}  // namespace tavrin::platform
