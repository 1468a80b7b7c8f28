#include "platform/linux/FolderPhotoLibrary.hpp"

#include "platform/linux/LinuxPhotoLibrary.hpp"

#include <tavrin/platform/Platform.hpp>

#include <openssl/evp.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

namespace tavrin::platform {

namespace fs = std::filesystem;

struct FolderPhotoLibrary::KnownFile {
  timespec modified{};
  off_t size = 0;
  std::string identifier;  // Of the path, so the digest is taken once per file.
  MediaFileFacts facts;
};

struct FolderPhotoLibrary::Album {
  AssetCollection collection;
  std::int64_t count = 0;
};

namespace {

// The regular-album subtype of the platform's collections.
constexpr std::int64_t regularAlbum = 2;
// The asset source option "the user's own library".
constexpr std::uint64_t userLibrary = 1;

bool isHidden(const fs::path& relative) {
  return std::any_of(relative.begin(), relative.end(), [](const fs::path& part) {
    return part.native().size() > 1 && part.native().front() == '.';
  });
}

double seconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void widen(std::optional<double>& start, std::optional<double>& end, std::optional<double> date) {
  if (!date) return;
  start = start ? std::min(*start, *date) : *date;
  end = end ? std::max(*end, *date) : *date;
}

}  // namespace

std::string mediaIdentifier(const std::string& path) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  EVP_Digest(path.data(), path.size(), digest.data(), &size, EVP_sha256(), nullptr);
  static constexpr char hex[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < 16; ++i) {
    text += hex[digest[i] >> 4];
    text += hex[digest[i] & 15];
  }
  return text;
}

FolderPhotoLibrary::FolderPhotoLibrary(StoreConsent consent, Folders folders)
    : _consent(std::move(consent)), _folders(std::move(folders)) {}

FolderPhotoLibrary::~FolderPhotoLibrary() = default;

void FolderPhotoLibrary::requestAuthorization(std::function<void(std::int64_t)> handler) {
  _consent.request([](bool, const std::optional<PlatformError>&) {});
  handler(_consent.status());
}

void FolderPhotoLibrary::enumerateAssets(std::int64_t mediaType,
                                         const std::function<void(const Asset&)>& visit) {
  if (_consent.status() != AuthorizationStatus::authorized || !scan()) return;
  for (const Asset& asset : _assets) {
    if (asset.mediaType == mediaType) visit(asset);
  }
}

void FolderPhotoLibrary::enumerateCollections(
    std::int64_t type, std::int64_t subtype,
    const std::function<void(const AssetCollection&)>& visit) {
  if (type != 1 || (subtype != anySubtype && subtype != regularAlbum)) return;
  if (_consent.status() != AuthorizationStatus::authorized || !scan()) return;
  for (const Album& album : _albums) visit(album.collection);
}

std::int64_t FolderPhotoLibrary::assetCount(const AssetCollection& collection) {
  const auto found = std::find_if(_albums.begin(), _albums.end(), [&](const Album& album) {
    return album.collection.localIdentifier == collection.localIdentifier;
  });
  return found != _albums.end() ? found->count : 0;
}

MediaFileFacts FolderPhotoLibrary::factsOf(const std::string& path, std::int64_t mediaType) {
  if (mediaType == MediaType::image) return imageFacts(path);
  if (!_headers) _headers = std::make_unique<MediaHeaderReader>();
  return _headers->read(path);
}

bool FolderPhotoLibrary::scan() {
  std::map<std::string, KnownFile> known;
  std::map<std::string, Asset> assets;  // By path, the order of every listing.
  std::map<std::string, Album> albums;
  for (const fs::path& root : _folders()) {
    std::error_code error;
    fs::recursive_directory_iterator entry(root, fs::directory_options::skip_permission_denied,
                                           error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
      if (stopRequested()) return false;
      const auto mediaType = mediaTypeOfFile(entry->path());
      struct stat status {};
      if (!mediaType || stat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        continue;
      }
      const std::string path = entry->path().string();
      auto& file = known[path];
      const auto previous = _known.find(path);
      if (previous != _known.end() && previous->second.size == status.st_size &&
          previous->second.modified.tv_sec == status.st_mtim.tv_sec &&
          previous->second.modified.tv_nsec == status.st_mtim.tv_nsec) {
        file = previous->second;
      } else {
        file = {status.st_mtim, status.st_size, mediaIdentifier(path), factsOf(path, *mediaType)};
      }
      Asset& asset = assets[path];
      asset.localIdentifier = file.identifier;
      asset.mediaType = *mediaType;
      asset.sourceType = userLibrary;
      asset.pixelWidth = file.facts.pixelWidth;
      asset.pixelHeight = file.facts.pixelHeight;
      asset.modificationDate = seconds(status.st_mtim);
      asset.creationDate = file.facts.creationDate.value_or(*asset.modificationDate);
      asset.location = file.facts.location;
      asset.duration = file.facts.duration;
      asset.isFavorite = file.facts.isFavorite;
      asset.isHidden = isHidden(entry->path().lexically_relative(root));

      const fs::path folder = entry->path().parent_path();
      if (folder == root) continue;
      Album& album = albums[folder.string()];
      if (album.count == 0) {
        album.collection.localIdentifier = mediaIdentifier(folder.string());
        album.collection.assetCollectionType = 1;
        album.collection.assetCollectionSubtype = regularAlbum;
      }
      widen(album.collection.startDate, album.collection.endDate, asset.creationDate);
      ++album.count;
    }
  }
  _known = std::move(known);
  _assets.clear();
  for (auto& [path, asset] : assets) _assets.push_back(std::move(asset));
  _albums.clear();
  for (auto& [path, album] : albums) _albums.push_back(std::move(album));
  return true;
}

std::unique_ptr<PhotoLibrary> makeLinuxPhotoLibrary(const std::shared_ptr<HostConsent>& consent) {
  return std::make_unique<FolderPhotoLibrary>(StoreConsent("photos", consent));
}

}  // namespace tavrin::platform
