#include "extractors/GeneralDataExtractor.hpp"

#include "dataset/DeviceIdentity.hpp"

namespace tavrin {

Element GeneralDataExtractor::extract() {
  Element element(_dataSourceNameKey);
  platform::DeviceInfo& device = _platform.device();

  element.append(modelIdentifier(device));
  element.append(device.model());
  element.append(device.systemName());
  element.append(device.systemVersion());
  element.append(device.localizedModel());
  const auto vendorId = device.identifierForVendor();
  element.append(vendorId ? std::optional<std::string>(uuidString(*vendorId)) : std::nullopt);
  element.append(device.isBatteryMonitoringEnabled());
  element.append(device.isProximityMonitoringEnabled());
  element.append(device.isGeneratingDeviceOrientationNotifications());
  element.append(device.proximityState());
  element.append(device.isMultitaskingSupported());

  // A failed query gives null for both sizes and is not reported.
  const auto sizes = device.homeFileSystemSizes().value_or(platform::FileSystemSizes{});
  element.append(sizes.size);
  element.append(sizes.freeSize);
  element.append(device.physicalMemory());

  const platform::LocaleFacts locale = device.currentLocale();
  element.append(locale.languageCode);
  element.append(locale.regionCode);
  element.append(locale.currencyCode);
  element.append(locale.currencySymbol);
  element.append(locale.identifier);
  element.append(locale.collatorIdentifier);
  element.append(locale.collationIdentifier);
  element.append(locale.scriptCode);
  element.append(locale.usesMetricSystem);

  const platform::TimeZoneFacts timeZone = device.currentTimeZone(_platform.clock().now());
  element.append(timeZone.identifier);
  element.append(timeZone.abbreviation);

  const auto carrier = device.subscriberCarrier();
  if (carrier) {
    element.append(carrier->allowsVOIP);
    element.append(carrier->carrierName);
    element.append(carrier->isoCountryCode);
    element.append(carrier->mobileCountryCode);
    element.append(carrier->mobileNetworkCode);
  } else {
    for (int i = 0; i < 5; ++i) element.append(nullptr);
  }
  element.append(device.currentRadioAccessTechnology());
  return element;
}

}  // namespace tavrin
