#include "dataset/PermissionHeplper.hpp"

#include <semaphore>
#include <string_view>
#include <utility>

namespace tavrin {

namespace {
using platform::AuthorizationStatus::authorized;
using platform::AuthorizationStatus::notDetermined;
using platform::EntityType::event;
using platform::EntityType::reminder;
constexpr std::int64_t contactsEntity = 0;
}  // namespace

void PermissionHeplper::requestPermissions(platform::Platform& platform) {
  // One semaphore for the whole sequence: each prompt is waited for before the
  // next is made, so the user sees at most one at a time.
  std::counting_semaphore<> answered(0);
  const auto signal = [&answered](auto&&...) { answered.release(); };

  if (platform.photos().authorizationStatus() == notDetermined) {
    platform.photos().requestAuthorization(signal);
    answered.acquire();
  }
  if (platform.contacts().authorizationStatus(contactsEntity) == notDetermined) {
    platform.contacts().requestAccess(contactsEntity, signal);
    answered.acquire();
  }
  for (const std::int64_t entity : {event, reminder}) {
    if (platform.events().authorizationStatus(entity) == notDetermined) {
      platform.events().requestAccess(entity, signal);
      answered.acquire();
    }
  }
}

std::vector<Row> PermissionHeplper::getPermissionStatuses(platform::Platform& platform) {
  const std::pair<std::string_view, std::int64_t> statuses[] = {
      {"NSCalendarsUsageDescription", platform.events().authorizationStatus(event)},
      {"NSRemindersUsageDescription", platform.events().authorizationStatus(reminder)},
      {"NSContactsUsageDescription", platform.contacts().authorizationStatus(contactsEntity)},
      {"NSPhotoLibraryUsageDescription", platform.photos().authorizationStatus()},
  };
  std::vector<Row> rows;
  rows.reserve(std::size(statuses));
  for (const auto& [key, status] : statuses) {
    Row& row = rows.emplace_back();
    row.append(key);
    row.append(std::int64_t{status == authorized ? 1 : 0});
  }
  return rows;
}

}  // namespace tavrin
