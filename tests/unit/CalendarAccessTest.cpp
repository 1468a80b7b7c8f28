// The authorization gates of the three calendar-database sources: each reads
// the permission of its own entity type and reports a refusal in its own words.

#include "extractors/CalendarEventExtractor.hpp"
#include "extractors/CalendarExtractor.hpp"
#include "extractors/CalendarReminderExtractor.hpp"

#include "SectionJson.hpp"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

struct AccessCase {
  const char* name;
  const char* profile;
  const char* calendars;
  const char* events;
  const char* reminders;
};
void PrintTo(const AccessCase& c, std::ostream* os) { *os << c.name; }

class CalendarAccess : public testing::TestWithParam<AccessCase> {};

TEST_P(CalendarAccess, GrantsOnlyAuthorizedEntityTypes) {
  const auto platform = loadTestProfile(GetParam().profile);
  EXPECT_EQ(sectionValues(CalendarExtractor(*platform).extract()),
            nlohmann::json::parse(GetParam().calendars));
  EXPECT_EQ(sectionValues(CalendarEventExtractor("CalendarEvents", *platform).extract()),
            nlohmann::json::parse(GetParam().events));
  EXPECT_EQ(sectionValues(CalendarReminderExtractor("CalendarReminders", *platform).extract()),
            nlohmann::json::parse(GetParam().reminders));
}

constexpr const char* calendarRow = R"([["home", null, false, 0, null, null, false, false, 0]])";
constexpr const char* reminderRow = R"([["R1", null, null, false, null, 0, false, false, false,
                                         false, false, null, null, null, null]])";

INSTANTIATE_TEST_SUITE_P(
    Gates, CalendarAccess,
    testing::Values(
        AccessCase{"EventsDeniedRemindersGranted", "calendar-events-access-denied.json",
                   R"(["EXTRACTING ERROR : Access denied CalendarsEvent"])",
                   R"(["EXTRACTING ERROR : Access denied CalendarEvents"])", reminderRow},
        // 4 is a partial grant elsewhere; here, as any status but 3, it refuses.
        AccessCase{"EventsGrantedRemindersLimited", "calendar-reminders-access-limited.json",
                   calendarRow,
                   R"([[null, "E1", 0, 1717236000.0, 1717239600.0, false, null, false, null, false,
                        null, null, null, 0, false, false, false, false, false, null, null, null,
                        null]])",
                   R"(["EXTRACTING ERROR : Access denied CalendarReminders"])"}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace tavrin
