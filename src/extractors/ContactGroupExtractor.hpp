#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <string>
#include <vector>

namespace tavrin {

// The "ContactGroups" source: one row per group of the address book, its
// identifier and whether it has a name. The name itself stays on the device.
class ContactGroupExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  // Keeps `platform`, which must outlive the extractor; reads it only in extract().
  ContactGroupExtractor(std::string dataSourceNameKey, std::vector<std::string> contactGroupKeys,
                        platform::Platform& platform);

  // Never throws: a refused permission or a refused query becomes the only entry.
  Element extract() override;

  // The group properties the section reports; the extraction does not consult them.
  const std::vector<std::string>& contactGroupKeys() const { return _contactGroupKeys; }

 private:
  static Row makeGroupRow(const platform::ContactGroup& group);

  std::vector<std::string> _contactGroupKeys;
};

}  // namespace tavrin
