#include "OfflineCollection.hpp"
#include "ProfileGenerator.hpp"

#include "dataset/DataExtractorManager.hpp"
#include "dataset/JsonWriter.hpp"
#include "dataset/PermissionHeplper.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <tavrin/codec.hpp>

#include <stdexcept>

namespace tavrin::tool {

OfflineDataset collectOffline(const platform::DeviceProfile& profile) {
  auto phone = std::make_shared<platform::ProfilePlatform>(profile);
  DataExtractorManager manager(phone);
  PermissionHeplper::requestPermissions(*phone);
  const MappedBuffer json = writeJson(manager.extractData());
  const auto compressed = compress(json.bytes(), CompressionAlgorithm::zlib);
  if (!compressed) throw std::runtime_error("the dataset cannot be compressed");
  return {json.str(), base64Encode(*compressed)};
}

OfflineDatasets collectTypicalPhones(std::size_t count) {
  OfflineDatasets datasets;
  for (std::uint64_t seed = 1; seed <= count; ++seed) {
    auto options = presetOptions(Preset::typical);
    options.seed = seed;
    auto dataset = collectOffline(ProfileGenerator(options).generate());
    datasets.payloads.push_back(std::move(dataset.payload));
    datasets.jsons.push_back(std::move(dataset.json));
  }
  return datasets;
}

}  // namespace tavrin::tool
