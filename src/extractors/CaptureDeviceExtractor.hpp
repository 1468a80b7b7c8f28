#pragma once

#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <cstddef>
#include <string>

namespace tavrin {

// The "CaptureDevice" source: one 49-value row per camera or microphone,
// describing it as capture hardware. It needs no permission and records no
// error.
class CaptureDeviceExtractor : public PlatformExtractor<IDataExtractor> {
 public:
  static constexpr std::size_t rowLength = 49;

  using PlatformExtractor::PlatformExtractor;

  Element extract() override;

  // The row of one device. A value the running system does not offer yet is
  // null and is not read; the row always has `rowLength` values.
  Row makeDeviceRow(const platform::CaptureDevice& device) const;
};

}  // namespace tavrin
