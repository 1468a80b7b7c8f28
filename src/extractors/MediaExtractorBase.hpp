#pragma once

#include "dataset/PlatformExtractor.hpp"
#include "extractors/LocationUtil.hpp"

#include <tavrin/platform/Platform.hpp>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

namespace tavrin {

// What the photo-library sources share: their name, the one coordinate
// rotation of the manager, the authorization gate and the asset row.
class MediaExtractorBase : public PlatformExtractor<IDataExtractor> {
 public:
  MediaExtractorBase(std::string name, std::shared_ptr<const LocationUtil> rotation,
                     platform::Platform& platform);

  // Builds the 13-value row of one asset, its position turned by
  // `rotation`, and appends it to `rows`, the caller's list. The list is
  // the element being filled, so a row lands where it stays as soon as it is
  // built and the library is never held twice.
  static void appendAssetRow(const platform::Asset& asset, const LocationUtil& rotation,
                             Element& rows);

 protected:
  // Appends the turned latitude and longitude of `location`, or two nulls.
  static void appendRotatedLocation(const std::optional<platform::Coordinate>& location,
                                    const LocationUtil& rotation, Row& row);

  // True when the photo library is open to us (a limited grant is not);
  // otherwise records the refusal in `element` under this source's name.
  bool isAuthorized(Element& element) const;

  // The rows of every asset of the given media types, one type after the
  // other, or the refusal when access is not granted.
  Element extractAssets(std::initializer_list<std::int64_t> mediaTypes) const;

  platform::PhotoLibrary& photos() const { return _platform.photos(); }

  const std::shared_ptr<const LocationUtil> locationUtil;
};

}  // namespace tavrin
