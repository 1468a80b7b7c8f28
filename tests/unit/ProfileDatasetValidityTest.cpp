// Every device profile of the project, collected by the real manager and
// written by the real JSON writer, must be a dataset the sandbox accepts: the
// sandbox's row tables and the sources agree on every section and position.
#include "DatasetValidator.hpp"
#include "collection/DataExtractorManager.hpp"
#include "collection/PermissionHeplper.hpp"
#include "dataset/JsonWriter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace tavrin::sandbox {
namespace {

std::vector<std::string> profileFiles() {
  std::vector<std::string> files;
  for (const char* directory : {TAVRIN_SOURCE_DIR "/examples/profiles", TAVRIN_TEST_DATA_DIR,
                                TAVRIN_TEST_DATA_DIR "/profiles"}) {
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      if (entry.path().extension() == ".json") files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

class ProfileDataset : public testing::TestWithParam<std::string> {};

TEST_P(ProfileDataset, IsAcceptedByTheSandbox) {
  const auto device = platform::loadDeviceProfile(GetParam());
  DataExtractorManager manager(device);
  PermissionHeplper::requestPermissions(*device);
  EXPECT_EQ(DatasetValidator().check(std::string(writeJson(manager.extractData()).view())).problem,
            std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(EveryProfile, ProfileDataset, testing::ValuesIn(profileFiles()),
                         [](const testing::TestParamInfo<std::string>& test) {
                           std::string name = std::filesystem::path(test.param).stem().string();
                           std::replace_if(
                               name.begin(), name.end(), [](char c) { return !std::isalnum(c); },
                               '_');
                           return name;
                         });

}  // namespace
}  // namespace tavrin::sandbox
