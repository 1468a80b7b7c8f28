#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace tavrin::tool {

// A phone's dataset as a collection would upload it, made without a server:
// the JSON text and the payload (base64 of its raw DEFLATE).
struct OfflineDataset {
  std::string json;
  std::string payload;
};

// Runs the permission step, the extraction, the JSON writer, compression and
// base64 on the phone, as a collection run does between its exchanges.
OfflineDataset collectOffline(const platform::DeviceProfile& profile);

// The datasets of `count` typical phones (seeds 1 to count) as the sandbox
// load sends them: `payloads[i]` carries `jsons[i]`.
struct OfflineDatasets {
  std::vector<std::string> payloads;
  std::vector<std::string> jsons;
};
OfflineDatasets collectTypicalPhones(std::size_t count);

}  // namespace tavrin::tool
