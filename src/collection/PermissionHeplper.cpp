#include "collection/PermissionHeplper.hpp"

#include "dataset/PendingAnswer.hpp"
#include "extractors/PermissionExtractor.hpp"

namespace tavrin {
namespace {

// Shows one prompt through `ask` and waits for its answer. A run that stops
// meanwhile stops here; the prompt's late answer then lands in the pending
// answer, which its handler keeps alive.
template <typename Ask>
void promptAndWait(Ask&& ask) {
  const PendingAnswer<bool> answered;
  ask([answered](auto&&...) { answered.deliver(true); });
  if (!answered.wait()) checkRunStop();
}

}  // namespace

void PermissionHeplper::requestPermissions(platform::Platform& platform) {
  using platform::AuthorizationStatus::notDetermined;
  using platform::ContactEntityType::contacts;
  // Each prompt is waited for before the next is made, so the user sees at
  // most one at a time.
  if (platform.photos().authorizationStatus() == notDetermined) {
    promptAndWait([&](auto handler) { platform.photos().requestAuthorization(handler); });
  }
  if (platform.contacts().authorizationStatus(contacts) == notDetermined) {
    promptAndWait([&](auto handler) { platform.contacts().requestAccess(contacts, handler); });
  }
  for (const std::int64_t entity : {platform::EntityType::event, platform::EntityType::reminder}) {
    if (platform.events().authorizationStatus(entity) == notDetermined) {
      promptAndWait([&](auto handler) { platform.events().requestAccess(entity, handler); });
    }
  }
}

std::vector<Row> PermissionHeplper::getPermissionStatuses(platform::Platform& platform) {
  return PermissionExtractor::permissionRows(platform);
}

}  // namespace tavrin
