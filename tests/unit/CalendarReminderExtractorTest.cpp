// Every test here runs the reminder fetch, whose completion the profile
// platform delivers on another thread; `make test-tsan` selects them by name.

#include "extractors/CalendarReminderExtractor.hpp"

#include "SectionJson.hpp"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

TEST(CalendarReminderExtractor, DescribesEveryReminderWithOrWithoutDateComponents) {
  const auto platform = loadTestProfile("calendar-reminder-rows.json");
  // Due 2021-01-01 00:00:00 UTC; then no date components; a location of
  // spaces with an empty attendee list; an empty location without one.
  EXPECT_EQ(sectionValues(CalendarReminderExtractor("CalendarReminders", *platform).extract()),
            nlohmann::json::parse(R"([
    ["new-year", 1609372800.0, 1609459200.0, true, 1609400000.75, 1, true, false, true, false, true,
     1609000000.0, 1609100000.0, "Europe/Paris", 2],
    ["no-date-components", null, null, false, null, 9, false, true, false, true, false, null,
     null, null, null],
    ["blank-location", null, null, false, null, 0, false, false, false, false, false, null, null,
     null, 0],
    ["empty-location", null, null, false, null, 0, false, false, false, false, false, null, null,
     null, null]])"));
}

// The rows are appended on the store's thread; each extraction must see all of
// them once its wait ends. Repeated, since a release that came before the last
// append would show only in some interleavings (under ThreadSanitizer, as a race).
TEST(CalendarReminderExtractor, SeesEveryRowOnceTheWaitEnds) {
  const auto platform = loadTestProfile("calendar-reminder-rows.json");
  CalendarReminderExtractor extractor("CalendarReminders", *platform);
  for (int run = 0; run < 50; ++run) {
    ASSERT_EQ(extractor.extract().ChildElements().size(), 4U) << "run " << run;
  }
}

// Both return instead of waiting for ever; only the fetch that delivers no list
// leaves an entry.
TEST(CalendarReminderExtractor, ReturnsWhenTheFetchDeliversNothing) {
  for (const auto& [profile, children] :
       {std::pair{"calendar-reminders-empty-fetch.json", "[]"},
        {"calendar-reminders-absent-fetch.json",
         R"(["EXTRACTING ERROR : CalendarReminders: Reminder fetch delivered no list"])"}}) {
    SCOPED_TRACE(profile);
    const auto platform = loadTestProfile(profile);
    EXPECT_EQ(sectionValues(CalendarReminderExtractor("CalendarReminders", *platform).extract()),
              nlohmann::json::parse(children));
  }
}

TEST(CalendarReminderExtractor, AppendingReleasesTheWaitExactlyOnce) {
  const auto platform = loadTestProfile("calendar-reminders-empty-fetch.json");
  const CalendarReminderExtractor extractor("CalendarReminders", *platform);
  // No list, an empty one, and two reminders.
  for (const std::optional<std::size_t> count : {std::optional<std::size_t>(), {0}, {2}}) {
    SCOPED_TRACE(count ? std::to_string(*count) + " reminders" : "no list");
    Element element(extractor.dataSourceNameKey());
    std::optional<std::vector<platform::Reminder>> reminders;
    if (count) reminders.emplace(*count);
    std::counting_semaphore<> semaphore(0);
    CalendarReminderExtractor::appendReminderRows(reminders, semaphore, extractor, element);
    EXPECT_TRUE(semaphore.try_acquire());
    EXPECT_FALSE(semaphore.try_acquire());
    EXPECT_EQ(element.ChildElements().size(), count.value_or(1));
  }
}

}  // namespace
}  // namespace tavrin
