#include "extractors/CalendarEventExtractor.hpp"

#include "ExpectTavrinError.hpp"
#include "SectionJson.hpp"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace tavrin {
namespace {

// The item identifiers (row position 2) of the events the source listed.
nlohmann::json itemIdentifiers(Element element) {
  nlohmann::json identifiers = nlohmann::json::array();
  for (const auto& row : sectionValues(std::move(element))) identifiers.push_back(row.at(1));
  return identifiers;
}

// Each profile places events a second inside and a second outside both ends of
// the range it expects; a range a day off, or computed in the wrong zone, lists
// a different set.
TEST(CalendarEventExtractor, RangeSpansTwoCalendarYearsEachWayInTheCurrentZone) {
  const struct {
    const char* profile;
    std::pair<double, double> range;
    std::vector<std::string> listed;
  } cases[] = {
      // 2024-02-29 12:00 UTC: 2022-02-28 and 2026-02-28 at 12:00. Three years
      // back is out; 23 months ahead is in; of an event every 10 March since
      // 2019, the occurrences of 2022 to 2025 are in.
      {"calendar-event-range-leap-day.json",
       {1646049600, 1772280000},
       {"ends-just-after-start", "twenty-three-months-ahead", "starts-just-before-end",
        "yearly-since-2019", "yearly-since-2019", "yearly-since-2019", "yearly-since-2019"}},
      // 2024-02-28 15:30 UTC is 29 February 00:30 in Tokyo: 27 February 15:30
      // UTC in 2022 and 2026, a day before what UTC's calendar gives.
      {"calendar-event-range-zone-ahead-of-utc.json",
       {1645975800, 1772206200},
       {"ends-just-after-start", "starts-just-before-end"}},
  };
  for (const auto& phone : cases) {
    const auto platform = loadTestProfile(phone.profile);
    CalendarEventExtractor extractor("CalendarEvents", *platform);
    EXPECT_EQ(extractor.predicateDates(), phone.range) << phone.profile;
    EXPECT_EQ(itemIdentifiers(extractor.extract()), nlohmann::json(phone.listed)) << phone.profile;
  }
}

TEST(CalendarEventExtractor, RecordsRangeDatesThatCannotBeComputedAsItsOneError) {
  const auto platform = loadTestProfile("calendar-event-clock-out-of-range.json");
  CalendarEventExtractor extractor("CalendarEvents", *platform);
  testing_support::expectTavrinError([&] { extractor.predicateDates(); },
                                     ErrorType::processingFailed,
                                     "CalendarEvents: Cann't create predicate dates");
  EXPECT_EQ(sectionValues(extractor.extract()),
            nlohmann::json::parse(R"(["EXTRACTING ERROR : TavrinError.processingFailed"])"));
}

TEST(CalendarEventExtractor, FillsEveryPositionWhateverTheEventLacks) {
  const auto platform = loadTestProfile("calendar-event-rows.json");
  // In turn: everything given; no identifier, organizer, dates or attendee list
  // and a location of spaces; an organizer named with spaces and an empty
  // attendee list; a floating all-day event whose organizer has no name.
  EXPECT_EQ(sectionValues(CalendarEventExtractor("CalendarEvents", *platform).extract()),
            nlohmann::json::parse(R"([
    ["E1", "I1", 1, 1717236000.5, 1717239600.0, false, 1717236000.5, true, false, true, 1, 2, 1,
     2, true, true, true, false, true, 1717000000.25, 1717100000.0, "Europe/Berlin", 3],
    [null, "I2", 0, 1717300000.0, 1717303600.0, false, null, false, null, false, null, null, null,
     0, false, false, false, false, false, null, null, null, null],
    ["E3", "I3", 0, 1717400000.0, 1717403600.0, false, null, true, false, false, 2, 1, 0,
     0, false, true, false, true, false, null, null, "Europe/Berlin", 0],
    ["E4", "I4", 0, 1717459200.0, 1717545600.0, true, null, false, true, false, 3, 0, 0,
     0, false, false, false, false, true, null, null, null, null]])"));
}

}  // namespace
}  // namespace tavrin
