#include "extractors/MediaExtractorBase.hpp"

#include "dataset/RunStop.hpp"
#include "extractors/AccessGate.hpp"

#include <utility>

namespace tavrin {

MediaExtractorBase::MediaExtractorBase(std::string name,
                                       std::shared_ptr<const LocationUtil> rotation,
                                       platform::Platform& platform)
    : PlatformExtractor(std::move(name), platform), locationUtil(std::move(rotation)) {}

void MediaExtractorBase::appendAssetRow(const platform::Asset& asset, const LocationUtil& rotation,
                                        Element& rows) {
  // One row is built at a time; keeping its storage spares a library of
  // 100,000 assets most of a million small allocations.
  thread_local Row row;
  row.clear();
  row.append(asset.localIdentifier);
  row.append(asset.mediaType);
  row.append(asset.mediaSubtypes);
  row.append(asset.sourceType);
  row.append(asset.pixelWidth);
  row.append(asset.pixelHeight);
  row.append(asset.creationDate);
  row.append(asset.modificationDate);
  appendRotatedLocation(asset.location, rotation, row);
  row.append(asset.duration);
  row.append(asset.isFavorite);
  row.append(asset.isHidden);
  rows.append(row);
}

void MediaExtractorBase::appendRotatedLocation(const std::optional<platform::Coordinate>& location,
                                               const LocationUtil& rotation, Row& row) {
  // Latitude and longitude are read apart, as the platform's location gives
  // them; the rotation makes both absent when either is.
  const auto [latitude, longitude] =
      rotation.rotateCoordinate(location ? std::optional(location->latitude) : std::nullopt,
                                location ? std::optional(location->longitude) : std::nullopt);
  row.append(latitude);
  row.append(longitude);
}

bool MediaExtractorBase::isAuthorized(Element& element) const {
  return grantsAccess(photos().authorizationStatus(), _dataSourceNameKey, element);
}

Element MediaExtractorBase::extractAssets(std::initializer_list<std::int64_t> mediaTypes) const {
  Element element(_dataSourceNameKey);
  if (!isAuthorized(element)) return element;
  for (const std::int64_t mediaType : mediaTypes) {
    // Once the run stops, the rest of the library passes unread.
    photos().enumerateAssets(mediaType, [&](const platform::Asset& asset) {
      if (!runStopping()) appendAssetRow(asset, *locationUtil, element);
    });
  }
  return element;
}

}  // namespace tavrin
