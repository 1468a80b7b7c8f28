#include "platform/linux/LinuxPhotoLibrary.hpp"

namespace tavrin::platform {
namespace {

// Built without media readers, the library has no photo library to read:
// access is restricted, and there is nothing to read.
class RestrictedPhotoLibrary final : public PhotoLibrary {
 public:
  std::int64_t authorizationStatus() override { return AuthorizationStatus::restricted; }
  // A restricted library cannot be granted; the prompt completes at once with that status.
  void requestAuthorization(std::function<void(std::int64_t)> handler) override {
    handler(AuthorizationStatus::restricted);
  }
  void enumerateAssets(std::int64_t, const std::function<void(const Asset&)>&) override {}
  void enumerateCollections(std::int64_t, std::int64_t,
                            const std::function<void(const AssetCollection&)>&) override {}
  std::int64_t assetCount(const AssetCollection&) override { return 0; }
};

}  // namespace

std::unique_ptr<PhotoLibrary> makeLinuxPhotoLibrary(const std::shared_ptr<HostConsent>&) {
  return std::make_unique<RestrictedPhotoLibrary>();
}

}  // namespace tavrin::platform
