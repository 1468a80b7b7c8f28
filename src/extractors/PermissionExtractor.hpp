#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PermissionHeplper.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {

// "Permissions": which of the four privacy permissions are granted at the
// moment of the run, so an empty section can be told from a denied one.
class PermissionExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override {
    Element element(_dataSourceNameKey);
    for (const Row& row : PermissionHeplper::getPermissionStatuses(_platform)) element.append(row);
    return element;
  }
};

}  // namespace tavrin
