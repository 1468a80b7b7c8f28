#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <string>

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

}  // namespace tavrin::tool
