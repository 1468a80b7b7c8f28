#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin::platform {
namespace {

// A granted calendar in Berlin with two calendars and the given events.
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
}

TEST(ProfileEventStore, AnOldDailySeriesIsEnteredNearTheRange) {
  // Daily at 09:00 Berlin since 1 January 1970, asked for 1 June 2020 only.
  const char* daily = R"({"calendarIdentifier": "home",
    "startDate": 28800, "endDate": 32400, "recurrence": {"frequency": "daily"}})";
  EXPECT_EQ(starts(daily, 1590962400, 1590962400 + day - 1), Starts{1590994800});
  // An occurrence under way at the start of the range overlaps it.
  EXPECT_EQ(starts(daily, 1590994800 + 0.5 * hour, 1590994800 + hour), Starts{1590994800});
}

TEST(ProfileEventStore, RangeOverlapIsClosedAndOpenDatesReachEverywhere) {
  auto platform = calendarWith(R"(
    {"calendarIdentifier": "home", "calendarItemIdentifier": "endsAtStart", "startDate": 100, "endDate": 200},
    {"calendarIdentifier": "home", "calendarItemIdentifier": "startsAtEnd", "startDate": 300, "endDate": 400},
    {"calendarIdentifier": "home", "calendarItemIdentifier": "before", "startDate": 100, "endDate": 199.5},
    {"calendarIdentifier": "home", "calendarItemIdentifier": "after", "startDate": 300.5, "endDate": 400},
    {"calendarIdentifier": "work", "calendarItemIdentifier": "noStart", "endDate": 250},
    {"calendarIdentifier": "work", "calendarItemIdentifier": "noDates"},
    {"calendarIdentifier": "work", "calendarItemIdentifier": "noEnd", "startDate": 5000})");
  std::vector<std::string> found;
  for (const auto& e : platform->events().events(200, 300, {"home", "work"})) {
    found.push_back(e.calendarItemIdentifier);
  }
  EXPECT_EQ(found, (std::vector<std::string>{"endsAtStart", "startsAtEnd", "noStart", "noDates"}));
  EXPECT_EQ(platform->events().events(200, 300, {"home"}).size(), 2U);
  EXPECT_EQ(platform->events().events(4000, 6000, {"work"}).size(), 2U);
}

TEST(ProfileEventStore, ALongRangeIsCutToFourYears) {
  const auto found = starts(R"({"calendarIdentifier": "home", "timeZone": "UTC",
    "startDate": 0, "endDate": 60, "recurrence": {"frequency": "daily"}})",
                            0, 1e300);
  ASSERT_EQ(found.size(), static_cast<std::size_t>(4 * 366 + 1));
  EXPECT_EQ(found.back(), ProfileEventStore::longestRange);
}

TEST(ProfileEventStore, NothingIsFoundWithoutAuthorizationOrForAnInvertedRange) {
  const char* event = R"({"calendarIdentifier": "home", "startDate": 10, "endDate": 20})";
  EXPECT_TRUE(calendarWith(event, "2")->events().events(0, 100, {"home"}).empty());
  EXPECT_TRUE(calendarWith(event, "2")->events().calendars(EntityType::event).empty());
  const auto granted = calendarWith(event);
  EXPECT_TRUE(granted->events().events(100, 0, {"home"}).empty());
  EXPECT_EQ(granted->events().events(0, 100, {"home"}).size(), 1U);
  EXPECT_EQ(granted->events().calendars(EntityType::event).size(), 2U);
  EXPECT_TRUE(granted->events().calendars(7).empty());
}

}  // namespace
}  // namespace tavrin::platform
