#pragma once

#include "collection/RunEvents.hpp"
#include "dataset/Element.hpp"
#include "dataset/IDataExtractor.hpp"
#include "extractors/LocationUtil.hpp"

#include <tavrin/platform/Platform.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavrin {

// Owns the data sources in their fixed order and builds the dataset document:
// the "GeneralInfo" header first, then one section per source. The header's
// device facts and the rotation angle are read once, at construction.
class DataExtractorManager {
 public:
  explicit DataExtractorManager(std::shared_ptr<platform::Platform> platform);

  // Runs every source afresh, one after another, and returns the document.
  // Sources record their failures in their sections; the only error is the
  // stop error, thrown before and after each source once the run on this
  // thread is to stop.
  DatasetDocument extractData();

  // Tells `events` (which must outlive the manager) when each source starts and ends.
  void setEvents(const RunEvents& events) { _events = &events; }

  // The rotation shared by the photo-library sources.
  const LocationUtil& locationUtil() const { return *_locationUtil; }
  // The sources, in run order.
  const std::vector<std::unique_ptr<IDataExtractor>>& extractors() const { return _extractors; }

 private:
  std::shared_ptr<platform::Platform> _platform;
  const std::int64_t _fileVersionStructure = 8;
  const std::int64_t _mobilePlatform = 1;
  const std::string _phoneModel;
  const std::string _phoneBrand;
  const std::string _systemVersion;
  const std::optional<std::string> _deviceId;
  const std::optional<std::string> _sdkIdentifier;
  std::shared_ptr<const LocationUtil> _locationUtil;
  std::vector<std::unique_ptr<IDataExtractor>> _extractors;
  const RunEvents* _events = &RunEvents::nobody();
};

}  // namespace tavrin
