#include "collection/DataExtractorManager.hpp"

#include "collection/notifyObserver.hpp"
#include "dataset/DeviceIdentity.hpp"
#include "extractors/ApplicationInfo.hpp"
#include "extractors/CalendarEventExtractor.hpp"
#include "extractors/CalendarExtractor.hpp"
#include "extractors/CalendarReminderExtractor.hpp"
#include "extractors/CaptureDeviceExtractor.hpp"
#include "extractors/ContactExtractor.hpp"
#include "extractors/ContactGroupExtractor.hpp"
#include "extractors/ContactKeys.hpp"
#include "extractors/GeneralDataExtractor.hpp"
#include "extractors/GeoDataExtractor.hpp"
#include "extractors/ImageExtractor.hpp"
#include "extractors/MediaAlbumExtractor.hpp"
#include "extractors/PermissionExtractor.hpp"
#include "extractors/UnknownFileExtractor.hpp"
#include "extractors/VideoExtractor.hpp"
#include "os/releaseFreedHeap.hpp"

#include <chrono>

namespace tavrin {

namespace {

std::optional<std::string> vendorIdentifier(platform::DeviceInfo& device) {
  const auto uuid = device.identifierForVendor();
  if (!uuid) return std::nullopt;
  return uuidString(*uuid);
}

// The angle is a whole number of degrees from 90 to 269, all equally likely.
std::shared_ptr<const LocationUtil> drawLocationUtil(platform::RandomSource& random) {
  const std::uint32_t draw = random.uniform(180);
  return std::make_shared<const LocationUtil>(static_cast<double>(draw % 180 + 90));
}

}  // namespace

DataExtractorManager::DataExtractorManager(std::shared_ptr<platform::Platform> platform)
    : _platform(std::move(platform)),
      _phoneModel(modelIdentifier(_platform->device())),
      _phoneBrand(_platform->device().model()),
      _systemVersion(_platform->device().systemVersion()),
      _deviceId(vendorIdentifier(_platform->device())),
      _sdkIdentifier(ApplicationInfo::sdkIdentifier(_platform->device())),
      _locationUtil(drawLocationUtil(_platform->random())) {
  platform::Platform& device = *_platform;
  _extractors.push_back(std::make_unique<ContactExtractor>(device));
  _extractors.push_back(std::make_unique<ContactGroupExtractor>(
      "ContactGroups",
      std::vector<std::string>{std::string(ContactKeys::CNGroupIdentifierKey),
                               std::string(ContactKeys::CNGroupNameKey)},
      device));
  _extractors.push_back(
      std::make_unique<MediaAlbumExtractor>("MediaAlbums", _locationUtil, device));
  _extractors.push_back(std::make_unique<VideoExtractor>("Video", _locationUtil, device));
  _extractors.push_back(std::make_unique<ImageExtractor>("Images", _locationUtil, device));
  _extractors.push_back(
      std::make_unique<UnknownFileExtractor>("UnknownFiles", _locationUtil, device));
  _extractors.push_back(std::make_unique<CalendarExtractor>(device));
  _extractors.push_back(std::make_unique<CalendarEventExtractor>("CalendarEvents", device));
  _extractors.push_back(std::make_unique<CalendarReminderExtractor>("CalendarReminders", device));
  _extractors.push_back(std::make_unique<CaptureDeviceExtractor>("CaptureDevice", device));
  _extractors.push_back(std::make_unique<GeoDataExtractor>("GeoInfo", device));
  _extractors.push_back(std::make_unique<GeneralDataExtractor>("GeneralData", device));
  _extractors.push_back(std::make_unique<PermissionExtractor>("Permissions", device));
}

DatasetDocument DataExtractorManager::extractData() {
  DatasetDocument document;
  document.reserve(_extractors.size() + 1);
  // The header goes first but is filled last, once the end time is known.
  document.emplace_back("GeneralInfo");

  platform::Clock& clock = _platform->clock();
  const double start = clock.now();
  for (const auto& extractor : _extractors) {
    const std::string& name = extractor->dataSourceNameKey();
    notifyObserver(_observer, [&](CollectionObserver& observer) { observer.sourceStarted(name); });
    const auto started = std::chrono::steady_clock::now();
    Element section = extractor->extract();
    const auto elapsed = std::chrono::steady_clock::now() - started;
    section.shrinkToFit();
    // What the source read from the platform is freed by now; handed back at
    // once, it does not stay resident under the next source and the JSON.
    os::releaseFreedHeap();
    notifyObserver(_observer, [&](CollectionObserver& observer) {
      observer.sourceFinished(name, section.ChildElements().size(), elapsed);
    });
    document.push_back(std::move(section));
  }
  const double end = clock.now();

  Element& header = document.front();
  header.append(_fileVersionStructure);
  header.append(_mobilePlatform);
  header.append(start);
  header.append(end);
  header.append(_phoneBrand);
  header.append(_phoneModel);
  header.append(_systemVersion);
  header.append(_deviceId);
  header.append(_sdkIdentifier);
  return document;
}

}  // namespace tavrin
