#include "platform/profile/ProfilePhotoLibrary.hpp"

namespace tavrin::platform {

ProfilePhotoLibrary::ProfilePhotoLibrary(const DeviceProfile& profile, PermissionState& permissions)
    : _assets(profile.assets), _collections(profile.collections), _permissions(permissions) {
  for (const auto& c : _collections) {
    _assetCounts[c.collection.localIdentifier] =
        static_cast<std::int64_t>(c.assetIdentifiers.size());
  }
}

bool ProfilePhotoLibrary::authorized() const {
  return _permissions.status(Permission::photoLibrary) == AuthorizationStatus::authorized;
}

std::int64_t ProfilePhotoLibrary::authorizationStatus() {
  return _permissions.status(Permission::photoLibrary);
}

void ProfilePhotoLibrary::requestAuthorization(std::function<void(std::int64_t status)> handler) {
  _permissions.prompt(Permission::photoLibrary, std::move(handler));
}

void ProfilePhotoLibrary::enumerateAssets(std::int64_t mediaType,
                                          const std::function<void(const Asset&)>& visit) {
  if (!authorized()) return;
  for (const auto& asset : _assets) {
    if (stopRequested()) return;  // the run discards what it gets now
    if (asset.mediaType == mediaType) visit(asset);
  }
}

void ProfilePhotoLibrary::enumerateCollections(
    std::int64_t type, std::int64_t subtype,
    const std::function<void(const AssetCollection&)>& visit) {
  if (!authorized()) return;
  for (const auto& c : _collections) {
    const auto& collection = c.collection;
    if (collection.assetCollectionType == type &&
        (subtype == anySubtype || collection.assetCollectionSubtype == subtype)) {
      visit(collection);
    }
  }
}

std::int64_t ProfilePhotoLibrary::assetCount(const AssetCollection& collection) {
  if (!authorized()) return 0;
  const auto found = _assetCounts.find(collection.localIdentifier);
  return found == _assetCounts.end() ? 0 : found->second;
}

}  // namespace tavrin::platform
