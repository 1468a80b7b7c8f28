#include "SectionJson.hpp"
#include "extractors/CaptureDeviceExtractor.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace tavrin {
namespace {

// The cameras-and-microphone phone, running the given system version.
std::shared_ptr<platform::Platform> phoneOnSystem(const std::string& version) {
  nlohmann::json profile = nlohmann::json::parse(
      std::ifstream(TAVRIN_TEST_DATA_DIR "/capture-devices-cameras-and-microphone.json"));
  profile["device"]["systemVersion"] = version;
  return platform::ProfilePlatform::fromText(profile.dump(), "iOS " + version);
}

// The runs of positions holding null, as 1-based first and last positions.
using Runs = std::vector<std::pair<std::size_t, std::size_t>>;
Runs nullRuns(const nlohmann::json& row) {
  Runs runs;
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (!row[i].is_null()) continue;
    if (runs.empty() || runs.back().second != i) runs.emplace_back(i + 1, i + 1);
    runs.back().second = i + 1;
  }
  return runs;
}

// Every row in full. Where one device holds equal values in neighbouring
// places, another holds different ones. Lens aperture and white-balance gain
// are 32-bit floats widened as they are; the active format gives height before
// width, then the epoch of its frame duration.
TEST(CaptureDeviceExtractor, BuildsEveryRowInPositionOrder) {
  EXPECT_EQ(
      sectionJson(CaptureDeviceExtractor("CaptureDevice", *phoneOnSystem("14.2")).extract()),
      R"([{"CaptureDevice":[)"
      R"(["AVCaptureDeviceTypeBuiltInDualCamera","Back Dual Camera",true,true,2,1.7999999523162842,)"
      R"(1,true,false,false,true,false,true,false,false,false,1.5,1,123.75,)"
      R"(true,false,false,false,true,true,true,false,false,true,true,true,true,false,true,)"
      R"(2,4.099999904632568,false,true,false,true,2,false,true,1080,1920,7,3,1986618469,875704422],)"
      R"(["AVCaptureDeviceTypeBuiltInWideAngleCamera","Front Camera",true,false,0,2.200000047683716,)"
      R"(2,true,false,false,false,false,true,true,false,true,1,1,1,)"
      R"(false,true,false,true,false,true,false,true,false,true,false,true,false,true,false,)"
      R"(1,3,null,null,null,null,null,null,null,720,1280,0,0,1986618469,875704438],)"
      R"(["AVCaptureDeviceTypeBuiltInMicrophone","iPhone Microphone",true,false,0,0,)"
      R"(0,false,true,false,false,false,false,false,false,false,1,1,1,)"
      R"(false,false,false,false,false,false,false,false,false,false,false,false,false,false,false,)"
      R"(0,1,null,null,null,null,null,null,null,0,0,0,0,1936684398,1819304813]]}])");
}

TEST(CaptureDeviceExtractor, NoDeviceListGivesAnEmptySection) {
  const auto phone =
      platform::loadDeviceProfile(TAVRIN_TEST_DATA_DIR "/capture-devices-no-list.json");
  EXPECT_EQ(sectionJson(CaptureDeviceExtractor("CaptureDevice", *phone).extract()),
            R"([{"CaptureDevice":[]}])");
}

// What each system version gates closed is null; the rows keep their length.
// The back camera has a depth-data format, the front camera none.
TEST(CaptureDeviceExtractor, ClosedVersionGatesGiveNulls) {
  const Runs below10 = {{1, 1}, {4, 5}, {11, 11}, {18, 19}, {37, 49}};
  const Runs below11 = {{4, 5}, {11, 11}, {18, 19}, {37, 49}};
  const Runs below13 = {{4, 5}, {37, 49}};
  const struct {
    const char* version;
    Runs withDepthFormat, withoutDepthFormat;
  } systems[] = {
      {"9.3", below10, below10},
      {"10.3", below11, below11},
      {"11.4", {{4, 5}, {37, 40}, {44, 49}}, below13},
      {"12.4", {{4, 5}, {37, 39}, {44, 49}}, below13},
      {"13.0", {}, {{37, 43}}},
      {"14.2", {}, {{37, 43}}},
  };
  for (const auto& system : systems) {
    const nlohmann::json rows = sectionValues(
        CaptureDeviceExtractor("CaptureDevice", *phoneOnSystem(system.version)).extract());
    ASSERT_EQ(rows.size(), 3u) << "the entry that is not a device is passed over";
    for (const auto& row : rows) EXPECT_EQ(row.size(), CaptureDeviceExtractor::rowLength);
    EXPECT_EQ(nullRuns(rows[0]), system.withDepthFormat) << system.version;
    EXPECT_EQ(nullRuns(rows[1]), system.withoutDepthFormat) << system.version;
  }
}

}  // namespace
}  // namespace tavrin
