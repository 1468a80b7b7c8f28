#include "extractors/ContactGroupExtractor.hpp"

#include "extractors/AccessGate.hpp"

#include <exception>
#include <utility>
#include <variant>

namespace tavrin {

ContactGroupExtractor::ContactGroupExtractor(std::string dataSourceNameKey,
                                             std::vector<std::string> contactGroupKeys,
                                             platform::Platform& platform)
    : PlatformExtractor(std::move(dataSourceNameKey), platform),
      _contactGroupKeys(std::move(contactGroupKeys)) {}

Element ContactGroupExtractor::extract() {
  Element element(_dataSourceNameKey);
  try {
    platform::ContactStore& store = _platform.contacts();
    if (!grantsAccess(store.authorizationStatus(platform::ContactEntityType::contacts),
                      _dataSourceNameKey, element)) {
      return element;
    }
    // The groups arrive as one list, so a refused query leaves no partial rows.
    const auto groups = store.groups();
    if (const auto* failure = std::get_if<platform::PlatformError>(&groups)) {
      element.addError(failure->localizedDescription);
      return element;
    }
    for (const platform::ContactGroup& group :
         std::get<std::vector<platform::ContactGroup>>(groups)) {
      element.append(makeGroupRow(group));
    }
  } catch (const std::exception& error) {
    // A platform that throws despite its contract fails like one that reports.
    element.addError(error);
  }
  return element;
}

Row ContactGroupExtractor::makeGroupRow(const platform::ContactGroup& group) {
  Row row;
  row.append(group.identifier);
  row.append(hasText(std::string_view(group.name)));
  return row;
}

}  // namespace tavrin
