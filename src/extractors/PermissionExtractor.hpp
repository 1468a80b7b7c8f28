#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PermissionHeplper.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {

// "Permissions": which of the four privacy permissions are granted at the
// moment of the run, so an empty section can be told from a denied one.
class PermissionExtractor : public ExtractorBase {
 public:
  PermissionExtractor(std::string dataSourceNameKey, platform::Platform& platform)
      : _dataSourceNameKey(std::move(dataSourceNameKey)), _platform(platform) {}

  const std::string& dataSourceNameKey() const override { return _dataSourceNameKey; }
  Element extract() override {
    Element element(_dataSourceNameKey);
    for (const Row& row : PermissionHeplper::getPermissionStatuses(_platform)) element.append(row);
    return element;
  }

 private:
  std::string _dataSourceNameKey;
  platform::Platform& _platform;
};

}  // namespace tavrin
