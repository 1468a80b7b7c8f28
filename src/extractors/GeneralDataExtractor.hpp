#pragma once

#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {

// "GeneralData": 31 facts of the device, its system, storage, memory, locale,
// time zone and carrier. A fact the platform cannot give is null; the section
// never holds an error entry.
class GeneralDataExtractor : public PlatformExtractor<IDataExtractor> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override;
};

}  // namespace tavrin
