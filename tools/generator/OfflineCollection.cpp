#include "OfflineCollection.hpp"
#include "ProfileGenerator.hpp"

#include "collection/DatasetPipeline.hpp"
#include "collection/PermissionHeplper.hpp"
#include "platform/profile/ProfilePlatform.hpp"

namespace tavrin::tool {

OfflineDataset collectOffline(const platform::DeviceProfile& profile) {
  auto phone = std::make_shared<platform::ProfilePlatform>(profile);
  DataExtractorManager manager(phone);
  PermissionHeplper::requestPermissions(*phone);
  MappedBuffer json = DatasetPipeline::datasetJson(manager);
  std::string text = json.str();
  return {std::move(text), DatasetPipeline::uploadPayload(std::move(json))};
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
