#include "platform/profile/ProfilePhotoLibrary.hpp"

namespace tavrin::platform {

ProfilePhotoLibrary::ProfilePhotoLibrary(ProfilePhotos photos, Permissions& permissions)
    : _assets(std::move(photos.assets)), _permissions(permissions) {
  _collections.reserve(photos.collections.size());
  for (auto& c : photos.collections) {
    _assetCounts[c.collection.localIdentifier] =
        static_cast<std::int64_t>(c.assetIdentifiers.size());
    _collections.push_back(std::move(c.collection));
  }
}

bool ProfilePhotoLibrary::authorized() const {
  return _permissions.status(Permission::photoLibrary) == AuthorizationStatus::authorized;
}

std::int64_t ProfilePhotoLibrary::authorizationStatus() {
  return _permissions.status(Permission::photoLibrary);
}

void ProfilePhotoLibrary::requestAuthorization(std::function<void(std::int64_t status)> handler) {
  _permissions.prompt(
      Permission::photoLibrary,
      [handler = std::move(handler)](std::int64_t status, auto) { handler(status); });
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
  for (const auto& collection : _collections) {
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
