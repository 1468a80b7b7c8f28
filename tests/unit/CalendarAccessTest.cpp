// The authorization gates of the three calendar-database sources: each reads
// the permission of its own entity type and reports a refusal in its own words.

#include "extractors/CalendarEventExtractor.hpp"
#include "extractors/CalendarExtractor.hpp"
#include "extractors/CalendarReminderExtractor.hpp"

#include "CalendarTestSupport.hpp"

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
  const auto platform = calendartest::loadProfile(GetParam().profile);
  calendartest::expectChildren(CalendarExtractor(*platform).extract(), GetParam().calendars);
  calendartest::expectChildren(CalendarEventExtractor("CalendarEvents", *platform).extract(),
                               GetParam().events);
  calendartest::expectChildren(CalendarReminderExtractor("CalendarReminders", *platform).extract(),
                               GetParam().reminders);
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
    calendartest::caseName<AccessCase>);

}  // namespace
}  // namespace tavrin
