#include "SectionJson.hpp"
#include "extractors/ImageExtractor.hpp"
#include "extractors/MediaAlbumExtractor.hpp"
#include "extractors/UnknownFileExtractor.hpp"
#include "extractors/VideoExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

namespace tavrin {
namespace {

// The four photo-library sources of one phone, sharing one rotation as the
// manager's sources do.
struct PhotoSources {
  explicit PhotoSources(const std::string& fixture, double angle = 180)
      : platform(platform::loadDeviceProfile(std::string(TAVRIN_TEST_DATA_DIR) + "/" + fixture)),
        rotation(std::make_shared<const LocationUtil>(angle)) {}

  std::shared_ptr<platform::Platform> platform;
  std::shared_ptr<const LocationUtil> rotation;
  MediaAlbumExtractor albums{"MediaAlbums", rotation, *platform};
  VideoExtractor videos{"Video", rotation, *platform};
  ImageExtractor images{"Images", rotation, *platform};
  UnknownFileExtractor unknownFiles{"UnknownFiles", rotation, *platform};

  std::array<IDataExtractor*, 4> all() { return {&albums, &videos, &images, &unknownFiles}; }
};

TEST(MediaExtractor, ReproducesTheWorkedRowsAndKeepsThePlacesOfMissingDatesAndLocation) {
  PhotoSources phone("photos-worked-rows.json");
  EXPECT_EQ(sectionJson(phone.videos.extract()),
            R"([{"Video":[["asset-1",2,0,1,1920,1080,1609459200.5,1609459300.25,null,null,12.5,)"
            R"(true,false]]}])");
  EXPECT_EQ(sectionJson(phone.albums.extract()),
            R"([{"MediaAlbums":[["album-1",1,2,25,null,null,null,null,0]]}])");
  EXPECT_EQ(
      sectionJson(PhotoSources("photos-assets-without-location-or-dates.json").images.extract()),
      R"([{"Images":[["bare",1,0,1,640,480,null,null,null,null,0,false,false],)"
      R"(["created-only",1,8,1,640,480,1500000000.125,null,null,null,0,false,false]]}])");
}

// A library the user has not granted gives each source only its access-denied
// entry; an empty library gives empty sections.
TEST(MediaExtractor, RefusedOrEmptyLibraryGivesNoRows) {
  for (const auto& [fixture, refused] : {std::pair{"photos-access-not-determined.json", true},
                                         {"photos-access-limited.json", true},
                                         {"photos-empty-library.json", false}}) {
    PhotoSources phone(fixture);
    for (IDataExtractor* source : phone.all()) {
      const std::string& name = source->dataSourceNameKey();
      const std::string entry = refused ? "\"EXTRACTING ERROR : Access denied " + name + "\"" : "";
      EXPECT_EQ(sectionJson(source->extract()), "[{\"" + name + "\":[" + entry + "]}]") << fixture;
    }
  }
}

TEST(MediaExtractor, UnknownFilesListUnknownTypeBeforeAudio) {
  EXPECT_EQ(sectionJson(PhotoSources("photos-unknown-and-audio.json").unknownFiles.extract()),
            R"([{"UnknownFiles":[["unknown-1",0,0,0,0,0,null,null,null,null,0,false,false],)"
            R"(["unknown-2",0,0,0,0,0,null,null,null,null,0,false,false],)"
            R"(["audio-1",3,0,0,0,0,null,null,null,null,61.5,false,false],)"
            R"(["audio-2",3,0,0,0,0,null,null,null,null,5,false,false]]}])");
}

// Listed in the profile as moment, smart album, album, smart album, album: the
// rows follow the collection type, then the profile's order, never the dates.
// An empty smart album still has its row; place names are only counted.
TEST(MediaAlbumExtractor, ListsAlbumsThenSmartAlbumsThenMomentsWithTheirCounts) {
  EXPECT_EQ(sectionJson(PhotoSources("photos-collections-by-type.json").albums.extract()),
            R"([{"MediaAlbums":[["album-late",1,2,1,1700000123.5,null,null,null,0],)"
            R"(["album-shared",1,101,3,null,null,null,null,1],)"
            R"(["smart-empty",2,203,0,null,null,null,null,0],)"
            R"(["smart-videos",2,202,1,null,null,null,null,0],)"
            R"(["moment-1",3,0,2,1000000007,1000003611.25,null,null,2]]}])");
}

TEST(MediaExtractor, AllFourSourcesTurnOnePlaceToTheSamePlace) {
  PhotoSources phone("photos-same-place-everywhere.json", 90);
  const auto [latitude, longitude] = phone.rotation->rotateCoordinate(48.8566, 2.3522);
  ASSERT_TRUE(latitude && longitude);
  nlohmann::json places = nlohmann::json::array();
  for (IDataExtractor* source : phone.all()) {
    const std::size_t at = source == &phone.albums ? 6 : 8;
    for (const auto& row : sectionValues(source->extract())) {
      places.push_back(nlohmann::json::array({row.at(at), row.at(at + 1)}));
    }
  }
  EXPECT_EQ(places, nlohmann::json(5u, nlohmann::json::array({*latitude, *longitude})));
}

}  // namespace
}  // namespace tavrin
