#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin::platform {
namespace {

// A device in Berlin with the calendars "home" and "work" and the given events; access is
// granted unless another status is given.
std::shared_ptr<ProfilePlatform> calendarWith(const std::string& events,
                                              const std::string& status = "3") {
  return ProfilePlatform::fromText(R"({
    "device": {"timeZone": {"identifier": "Europe/Berlin"}},
    "permissions": {"calendarEvents": {"status": )" +
                                       status + R"(}},
    "calendars": {"events": [{"calendarIdentifier": "home"}, {"calendarIdentifier": "work"}]},
    "events": [)" + events + "]}",
                                   "events.json");
}

// The starts of the one recurring event in the range; each occurrence is dated by its own
// start and lasts as long as the first.
std::vector<double> starts(const std::string& event, double from, double to) {
  const auto events = calendarWith(event)->events().events(from, to, {"home", "work"});
  std::vector<double> found;
  for (const auto& e : events) {
    found.push_back(e.startDate.value_or(-1));
    EXPECT_EQ(e.occurrenceDate, e.startDate);
    EXPECT_EQ(*e.endDate - *e.startDate, *events[0].endDate - *events[0].startDate);
  }
  return found;
}

using Starts = std::vector<double>;
constexpr double hour = 3600, day = 86400;

TEST(ProfileEventStore, SeriesFollowTheCalendarOfTheirZone) {
  // Monthly on the 31st, 19:00 Berlin for 90 minutes: on the last day of shorter months,
  // and across the clocks going forward on 29 March.
  EXPECT_EQ(starts(R"({"calendarIdentifier": "home", "startDate": 1580493600, "endDate": 1580499000,
                       "recurrence": {"frequency": "monthly", "count": 5}})",
                   1577836800, 1609459199),
            (Starts{1580493600, 1582999200, 1585674000, 1588266000, 1590944400}));
  // Yearly at noon UTC on 29 February 2020: on the 28th in other years.
  EXPECT_EQ(starts(R"({"calendarIdentifier": "home", "timeZone": "UTC", "startDate": 1582977600,
                       "endDate": 1582981200, "recurrence": {"frequency": "yearly"}})",
                   1582977600, 1582977600 + 4 * 366 * day),
            (Starts{1582977600, 1614513600, 1646049600, 1677585600, 1709208000}));
  // Daily at 09:00 in New York, whose clocks go forward on 8 March 2020, on a device in
  // Berlin: the local time of its own zone is kept.
  EXPECT_EQ(starts(R"({"calendarIdentifier": "work", "timeZone": "America/New_York",
                       "startDate": 1583589600, "endDate": 1583593200,
                       "recurrence": {"frequency": "daily", "interval": 1, "count": 3}})",
                   1580000000, 1600000000),
            (Starts{1583589600, 1583672400, 1583758800}));
  // Mondays 10:00 Berlin from 23 March 2020, until the 6 April occurrence inclusive.
  EXPECT_EQ(starts(R"({"calendarIdentifier": "home", "startDate": 1584954000, "endDate": 1584957600,
                       "recurrence": {"frequency": "weekly", "until": 1586160000}})",
                   1580000000, 1600000000),
            (Starts{1584954000, 1585555200, 1586160000}));
  // Every 613566757 weeks, 2^32 + 3 days: beyond the 32 bits ICU adds, not 3 days later.
  EXPECT_EQ(starts(R"({"calendarIdentifier": "home", "timeZone": "UTC", "startDate": 0,
    "endDate": 60, "recurrence": {"frequency": "weekly", "interval": 613566757}})",
                   0, 1e7),
            Starts{0});
}

// Daily at 09:00 Berlin since 1 January 1970: asked for 1 June 2020 only, and for a range
// that starts while that day's occurrence is under way. Asked for everything: four years.
TEST(ProfileEventStore, AnOldDailySeriesIsEnteredNearTheRangeAndCutToFourYears) {
  const char* daily = R"({"calendarIdentifier": "home",
    "startDate": 28800, "endDate": 32400, "recurrence": {"frequency": "daily"}})";
  EXPECT_EQ(starts(daily, 1590962400, 1590962400 + day - 1), Starts{1590994800});
  EXPECT_EQ(starts(daily, 1590994800 + 0.5 * hour, 1590994800 + hour), Starts{1590994800});
  const auto found = starts(R"({"calendarIdentifier": "home", "timeZone": "UTC",
    "startDate": 0, "endDate": 60, "recurrence": {"frequency": "daily"}})",
                            0, 1e300);
  ASSERT_EQ(found.size(), static_cast<std::size_t>(4 * 366 + 1));
  EXPECT_EQ(found.back(), ProfileEventStore::longestRange);
}

// Events at the edges of the range 200 to 300, and events with open dates.
constexpr const char* edges = R"(
  {"calendarIdentifier": "home", "calendarItemIdentifier": "endsAtStart", "startDate": 100, "endDate": 200},
  {"calendarIdentifier": "home", "calendarItemIdentifier": "startsAtEnd", "startDate": 300, "endDate": 400},
  {"calendarIdentifier": "home", "calendarItemIdentifier": "before", "startDate": 100, "endDate": 199.5},
  {"calendarIdentifier": "home", "calendarItemIdentifier": "after", "startDate": 300.5, "endDate": 400},
  {"calendarIdentifier": "work", "calendarItemIdentifier": "noStart", "endDate": 250},
  {"calendarIdentifier": "work", "calendarItemIdentifier": "noDates"},
  {"calendarIdentifier": "work", "calendarItemIdentifier": "noEnd", "startDate": 5000})";

// The range is closed and open dates reach everywhere; nothing is found without
// authorization or for an inverted range.
TEST(ProfileEventStore, FindsTheEventsThatOverlapTheRange) {
  const auto platform = calendarWith(edges);
  std::vector<std::string> found;
  for (const auto& e : platform->events().events(200, 300, {"home", "work"}))
    found.push_back(e.calendarItemIdentifier);
  EXPECT_EQ(found, (std::vector<std::string>{"endsAtStart", "startsAtEnd", "noStart", "noDates"}));
  EXPECT_EQ(platform->events().events(200, 300, {"home"}).size(), 2U);
  EXPECT_EQ(platform->events().events(4000, 6000, {"work"}).size(), 2U);
  EXPECT_TRUE(platform->events().events(300, 200, {"home", "work"}).empty());
  EXPECT_EQ(platform->events().calendars(EntityType::event).size(), 2U);
  EXPECT_TRUE(platform->events().calendars(7).empty());

  const auto refused = calendarWith(edges, "2");
  EXPECT_TRUE(refused->events().events(200, 300, {"home", "work"}).empty());
  EXPECT_TRUE(refused->events().calendars(EntityType::event).empty());
}

}  // namespace
}  // namespace tavrin::platform
