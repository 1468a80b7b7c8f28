#include "SectionJson.hpp"
#include "extractors/CaptureDeviceExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>
#include <string>

namespace tavrin {
namespace {

std::string fixturePath(const std::string& name) {
  return std::string(TAVRIN_TEST_DATA_DIR) + "/" + name;
}

constexpr const char* camerasAndMicrophone = "capture-devices-cameras-and-microphone.json";

// The cameras-and-microphone phone, running the given system version.
std::shared_ptr<platform::Platform> phoneOnSystem(const std::string& version) {
  std::ifstream in(fixturePath(camerasAndMicrophone));
  nlohmann::json profile = nlohmann::json::parse(in);
  profile["device"]["systemVersion"] = version;
  const std::string path = testing::TempDir() + "capture-devices-ios-" + version + ".json";
  std::ofstream(path) << profile.dump();
  return platform::loadDeviceProfile(path);
}

// 1-based positions holding null.
std::set<int> nullPositions(const nlohmann::json& row) {
  std::set<int> positions;
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (row[i].is_null()) positions.insert(static_cast<int>(i) + 1);
  }
  return positions;
}

std::set<int> range(int first, int last) {
  std::set<int> positions;
  for (int p = first; p <= last; ++p) positions.insert(p);
  return positions;
}

std::set<int> join(std::initializer_list<std::set<int>> parts) {
  std::set<int> all;
  for (const auto& part : parts) all.insert(part.begin(), part.end());
  return all;
}

TEST(CaptureDeviceExtractor, BuildsTheBackCameraRowInPositionOrder) {
  const auto phone = phoneOnSystem("14.2");
  CaptureDeviceExtractor extractor("CaptureDevice", *phone);
  // Lens aperture and white-balance gain are 32-bit floats widened as they are;
  // the active format gives height before width, then the epoch of its frame
  // duration.
  EXPECT_THAT(
      sectionJson(extractor.extract()),
      testing::StartsWith(
          R"([{"CaptureDevice":[["AVCaptureDeviceTypeBuiltInDualCamera","Back Dual Camera",true,true,2,)"
          R"(1.7999999523162842,1,true,false,false,true,false,true,false,false,false,)"
          R"(1.5,1,123.75,true,false,false,false,true,true,true,false,false,true,true,)"
          R"(true,true,false,true,2,4.099999904632568,)"
          R"(false,true,true,true,2,false,true,)"
          R"(1080,1920,7,3,1986618469,875704422],)"));
}

TEST(CaptureDeviceExtractor, NoDeviceListGivesAnEmptySection) {
  const auto phone = platform::loadDeviceProfile(fixturePath("capture-devices-no-list.json"));
  CaptureDeviceExtractor extractor("CaptureDevice", *phone);
  EXPECT_EQ(sectionJson(extractor.extract()), R"([{"CaptureDevice":[]}])");
}

struct SystemCase {
  const char* version;
  // Null positions of the back camera (which has a depth-data format) and of
  // the front camera (which has none).
  std::set<int> withDepthFormat, withoutDepthFormat;
};

class CaptureDeviceVersions : public testing::TestWithParam<SystemCase> {};

TEST_P(CaptureDeviceVersions, ClosedGatesGiveNullsAndRowsKeepTheirLength) {
  const SystemCase& system = GetParam();
  const auto phone = phoneOnSystem(system.version);
  CaptureDeviceExtractor extractor("CaptureDevice", *phone);
  const nlohmann::json rows = sectionValues(extractor.extract());
  ASSERT_EQ(rows.size(), 3u) << "the entry that is not a device is passed over";
  for (const auto& row : rows) EXPECT_EQ(row.size(), CaptureDeviceExtractor::rowLength);
  EXPECT_EQ(nullPositions(rows[0]), system.withDepthFormat);
  EXPECT_EQ(nullPositions(rows[1]), system.withoutDepthFormat);
}

const std::set<int> below11 = join({{4, 5, 11, 18, 19}, range(37, 49)});

INSTANTIATE_TEST_SUITE_P(
    Systems, CaptureDeviceVersions,
    testing::Values(SystemCase{"9.3", join({{1}, below11}), join({{1}, below11})},
                    SystemCase{"10.3", below11, below11},
                    SystemCase{"11.4", join({{4, 5}, range(37, 40), range(44, 49)}),
                               join({{4, 5}, range(37, 49)})},
                    SystemCase{"12.4", join({{4, 5, 37, 38, 39}, range(44, 49)}),
                               join({{4, 5}, range(37, 49)})},
                    SystemCase{"13.0", {}, range(37, 43)}, SystemCase{"14.2", {}, range(37, 43)}),
    [](const testing::TestParamInfo<SystemCase>& param) {
      std::string name = std::string("iOS") + param.param.version;
      for (char& c : name) c = c == '.' ? '_' : c;
      return name;
    });

}  // namespace
}  // namespace tavrin
