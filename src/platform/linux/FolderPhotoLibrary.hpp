#pragma once

#include "platform/linux/StoreConsent.hpp"
#include "platform/linux/mediaFileFacts.hpp"
#include "platform/linux/mediaFolders.hpp"

#include <tavrin/platform/PhotoLibrary.hpp>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tavrin::platform {

// The identifier of the asset or album at `path`: the first 32 hexadecimal
// digits of the path's SHA-256, stable for a file while the file's name stays
// on the machine.
std::string mediaIdentifier(const std::string& path);

// The photo library of a Linux machine: the images, videos and sound
// recordings of the user's media folders, scanned recursively.
//
// - An asset is a file that its extension names as media; its identifier is a
//   digest of its path, so that no file name leaves the machine. Images are
//   described by their Exif and XMP metadata, videos and recordings by their
//   container headers. The creation date is the recorded one, else the file's
//   modification time; the modification date is the file's.
// - A file or folder whose name starts with a dot is hidden.
// - Every folder below a media folder that holds assets itself is an album
//   (a regular album); there are no smart albums and no moments.
//
// Every enumeration walks the folders afresh, so it lists the files as they
// are now; the headers of a file are read again only when its size or
// modification time has changed since the last walk.
class FolderPhotoLibrary final : public PhotoLibrary {
 public:
  using Folders = std::function<std::vector<std::filesystem::path>()>;

  explicit FolderPhotoLibrary(StoreConsent consent, Folders folders = userMediaFolders);
  ~FolderPhotoLibrary() override;

  std::int64_t authorizationStatus() override { return _consent.status(); }
  void requestAuthorization(std::function<void(std::int64_t)> handler) override;
  void enumerateAssets(std::int64_t mediaType,
                       const std::function<void(const Asset&)>& visit) override;
  void enumerateCollections(std::int64_t type, std::int64_t subtype,
                            const std::function<void(const AssetCollection&)>& visit) override;
  std::int64_t assetCount(const AssetCollection& collection) override;

 private:
  struct KnownFile;
  struct Album;

  // Walks the folders and keeps what it found; false when the run was stopped.
  bool scan();
  MediaFileFacts factsOf(const std::string& path, std::int64_t mediaType);

  StoreConsent _consent;
  Folders _folders;
  std::unique_ptr<MediaHeaderReader> _headers;  // Made when the first video is read.
  std::map<std::string, KnownFile> _known;      // By path.
  std::vector<Asset> _assets;                   // In path order.
  std::vector<Album> _albums;                   // In path order.
};

}  // namespace tavrin::platform
