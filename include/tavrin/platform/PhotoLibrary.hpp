#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::platform {

/// A position in decimal degrees.
struct Coordinate {
  double latitude = 0;   ///< North positive, -90 to 90.
  double longitude = 0;  ///< East positive, -180 to 180.
};

/// Media types of the photo library (raw values).
namespace MediaType {
constexpr std::int64_t unknown = 0;  ///< Neither image, video nor audio.
constexpr std::int64_t image = 1;    ///< Still images.
constexpr std::int64_t video = 2;    ///< Videos.
constexpr std::int64_t audio = 3;    ///< Audio recordings.
}  // namespace MediaType

/// One asset of the photo library. Dates are seconds since 1970.
struct Asset {
  std::string localIdentifier;             ///< Unique within the library.
  std::int64_t mediaType = 0;              ///< Raw value.
  std::uint64_t mediaSubtypes = 0;         ///< Raw option set.
  std::uint64_t sourceType = 0;            ///< Raw option set.
  std::int64_t pixelWidth = 0;             ///< Width in pixels.
  std::int64_t pixelHeight = 0;            ///< Height in pixels.
  std::optional<double> creationDate;      ///< When it was taken; absent when unknown.
  std::optional<double> modificationDate;  ///< When it was last changed; absent when unknown.
  std::optional<Coordinate> location;      ///< Where it was taken; absent when unknown.
  double duration = 0;                     ///< Seconds; 0 for still images.
  bool isFavorite = false;                 ///< Marked as a favourite.
  bool isHidden = false;                   ///< Hidden from the library's main views.
};

/// An album, smart album or moment.
struct AssetCollection {
  std::string localIdentifier;              ///< Unique within the library.
  std::int64_t assetCollectionType = 0;     ///< 1 album, 2 smart album, 3 moment (raw value).
  std::int64_t assetCollectionSubtype = 0;  ///< Raw value.
  std::optional<double> startDate;          ///< Its earliest asset's date; absent when unknown.
  std::optional<double> endDate;            ///< Its latest asset's date; absent when unknown.
  std::optional<Coordinate> approximateLocation;    ///< A moment's place; absent when unknown.
  std::vector<std::string> localizedLocationNames;  ///< Names of a moment's places.
};

/// The photo library. Calls answer on the calling thread unless stated otherwise.
class PhotoLibrary {
 public:
  virtual ~PhotoLibrary() = default;

  /// The subtype value that matches collections of any subtype.
  static constexpr std::int64_t anySubtype = 9223372036854775807;

  /// The raw authorization status.
  virtual std::int64_t authorizationStatus() = 0;
  /// Asks the user for access; `handler` runs once with the new status, possibly on
  /// another thread.
  virtual void requestAuthorization(std::function<void(std::int64_t status)> handler) = 0;
  /// Visits every asset of a media type once, in a stable order, synchronously.
  virtual void enumerateAssets(std::int64_t mediaType,
                               const std::function<void(const Asset&)>& visit) = 0;
  /// Visits every collection of a type and subtype once, in a stable order.
  virtual void enumerateCollections(std::int64_t type, std::int64_t subtype,
                                    const std::function<void(const AssetCollection&)>& visit) = 0;
  /// The number of assets in a collection.
  virtual std::int64_t assetCount(const AssetCollection& collection) = 0;
};

}  // namespace tavrin::platform
