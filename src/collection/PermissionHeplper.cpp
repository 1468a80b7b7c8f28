#include "collection/PermissionHeplper.hpp"

#include "extractors/PermissionExtractor.hpp"

#include <semaphore>

namespace tavrin {

void PermissionHeplper::requestPermissions(platform::Platform& platform) {
  using platform::AuthorizationStatus::notDetermined;
  using platform::ContactEntityType::contacts;
  // One semaphore for the whole sequence: each prompt is waited for before the
  // next is made, so the user sees at most one at a time.
  std::counting_semaphore<> answered(0);
  const auto signal = [&answered](auto&&...) { answered.release(); };

  if (platform.photos().authorizationStatus() == notDetermined) {
    platform.photos().requestAuthorization(signal);
    answered.acquire();
  }
  if (platform.contacts().authorizationStatus(contacts) == notDetermined) {
    platform.contacts().requestAccess(contacts, signal);
    answered.acquire();
  }
  for (const std::int64_t entity : {platform::EntityType::event, platform::EntityType::reminder}) {
    if (platform.events().authorizationStatus(entity) == notDetermined) {
      platform.events().requestAccess(entity, signal);
      answered.acquire();
    }
  }
}

std::vector<Row> PermissionHeplper::getPermissionStatuses(platform::Platform& platform) {
  return PermissionExtractor::permissionRows(platform);
}

}  // namespace tavrin
