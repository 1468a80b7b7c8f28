#include "extractors/CalendarExtractor.hpp"

#include "SectionJson.hpp"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

TEST(CalendarExtractor, DescribesEveryEventCalendarWithOrWithoutColourAndSource) {
  const auto platform = loadTestProfile("calendars-colour-and-source.json");
  CalendarExtractor extractor(*platform);
  const Element element = extractor.extract();
  EXPECT_EQ(element.Name(), "Calendars");
  // The reminder list of the profile is not a calendar that holds events. A
  // source title of spaces has no text; one of a line break has.
  EXPECT_EQ(sectionValues(element), nlohmann::json::parse(R"([
    ["C1", 4, true, 1, "S1", 2, true, true, 9223372036854775809],
    ["C2", null, false, 0, null, null, false, false, 0],
    ["C3", 2, false, 0, "S3", 0, false, false, 0],
    ["C4", null, false, 0, "S4", 5, true, false, 0]])"));
}

}  // namespace
}  // namespace tavrin
