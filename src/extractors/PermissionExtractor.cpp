#include "extractors/PermissionExtractor.hpp"

#include <string_view>
#include <utility>

namespace tavrin {

Element PermissionExtractor::extract() {
  Element element(_dataSourceNameKey);
  for (const Row& row : permissionRows(_platform)) element.append(row);
  return element;
}

std::vector<Row> PermissionExtractor::permissionRows(platform::Platform& platform) {
  using platform::EntityType::event;
  using platform::EntityType::reminder;
  const std::pair<std::string_view, std::int64_t> statuses[] = {
      {"NSCalendarsUsageDescription", platform.events().authorizationStatus(event)},
      {"NSRemindersUsageDescription", platform.events().authorizationStatus(reminder)},
      {"NSContactsUsageDescription",
       platform.contacts().authorizationStatus(platform::ContactEntityType::contacts)},
      {"NSPhotoLibraryUsageDescription", platform.photos().authorizationStatus()},
  };
  std::vector<Row> rows;
  rows.reserve(std::size(statuses));
  for (const auto& [key, status] : statuses) {
    Row& row = rows.emplace_back();
    row.append(key);
    row.append(std::int64_t{status == platform::AuthorizationStatus::authorized ? 1 : 0});
  }
  return rows;
}

}  // namespace tavrin
