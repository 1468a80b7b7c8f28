#pragma once

#include "dataset/IDataExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <string>
#include <utility>

namespace tavrin {

// What most sources hold: the name the manager gives them and the platform
// they read. `Base` is IDataExtractor or one of its refinements.
template <typename Base>
class PlatformExtractor : public Base {
 public:
  PlatformExtractor(std::string dataSourceNameKey, platform::Platform& platform)
      : _dataSourceNameKey(std::move(dataSourceNameKey)), _platform(platform) {}

  const std::string& dataSourceNameKey() const override { return _dataSourceNameKey; }

 protected:
  const std::string _dataSourceNameKey;
  platform::Platform& _platform;
};

}  // namespace tavrin
