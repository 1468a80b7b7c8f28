#pragma once

#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/Permissions.hpp"

#include <unordered_map>

namespace tavrin::platform {

// The photo library of a profile. As on a phone, fetches find nothing unless
// the permission is authorized (3).
class ProfilePhotoLibrary final : public PhotoLibrary {
 public:
  ProfilePhotoLibrary(ProfilePhotos photos, Permissions& permissions);

  std::int64_t authorizationStatus() override;
  void requestAuthorization(std::function<void(std::int64_t status)> handler) override;
  // The assets of that media type, in profile order.
  void enumerateAssets(std::int64_t mediaType,
                       const std::function<void(const Asset&)>& visit) override;
  // The collections of that type and subtype (or any subtype), in profile order.
  void enumerateCollections(std::int64_t type, std::int64_t subtype,
                            const std::function<void(const AssetCollection&)>& visit) override;
  // The number of asset identifiers the profile lists for the collection with
  // this local identifier; 0 for one it does not know.
  std::int64_t assetCount(const AssetCollection& collection) override;

 private:
  bool authorized() const;

  const std::vector<Asset> _assets;
  // The collections without their asset identifiers, of which only the
  // number is ever asked for: on a large phone they are most of the profile.
  std::vector<AssetCollection> _collections;
  std::unordered_map<std::string, std::int64_t> _assetCounts;
  Permissions& _permissions;
};

}  // namespace tavrin::platform
