// The Linux platform reads the calendars and task lists of a real Evolution
// Data Server, started on a private session bus (tests/linux/private-session.sh),
// into the same rows as a device profile that describes the same items. The
// items lie around the day the test runs, so that they stay within the
// collection's four years.

#include "extractors/CalendarEventExtractor.hpp"
#include "extractors/CalendarExtractor.hpp"
#include "extractors/CalendarReminderExtractor.hpp"
#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/LinuxPlatform.hpp"
#include "platform/linux/edsCalendarItem.hpp"

#include "SectionJson.hpp"
#include "TemporaryDirectory.hpp"

#include <libecal/libecal.h>
#include <unicode/timezone.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tavrin {
namespace {

using nlohmann::json;
using platform::GErrorRef;
using platform::GObjectRef;

constexpr std::int64_t hour = 3600, day = 86400;

// A moment as iCalendar writes it: in UTC ("...Z"), as a wall-clock time
// (given as the seconds that wall clock would show in UTC), or as a date.
std::string stamp(std::int64_t seconds, const char* format) {
  const std::time_t time = seconds;
  std::tm fields{};
  gmtime_r(&time, &fields);
  char text[32];
  std::strftime(text, sizeof text, format, &fields);
  return text;
}
std::string utc(std::int64_t seconds) { return stamp(seconds, "%Y%m%dT%H%M%SZ"); }
std::string wall(std::int64_t seconds) { return stamp(seconds, "%Y%m%dT%H%M%S"); }
std::string date(std::int64_t seconds) { return stamp(seconds, "%Y%m%d"); }

// The instant a Berlin wall clock shows `wallSeconds`.
std::int64_t inBerlin(std::int64_t wallSeconds) {
  const std::unique_ptr<icu::TimeZone> berlin(icu::TimeZone::createTimeZone("Europe/Berlin"));
  std::int32_t raw = 0, dst = 0;
  UErrorCode status = U_ZERO_ERROR;
  berlin->getOffset(static_cast<UDate>(wallSeconds) * 1000.0, true, raw, dst, status);
  return wallSeconds - (raw + dst) / 1000;
}

const std::int64_t base = (std::time(nullptr) / day + 30) * day;  // a midnight a month ahead

std::string item(const std::string& kind, const std::string& lines) {
  return "BEGIN:" + kind + "\r\n" + lines + "CREATED:" + utc(base - 10 * day) +
         "\r\nLAST-MODIFIED:" + utc(base - 5 * day) + "\r\nEND:" + kind + "\r\n";
}
// The wall-clock start of the weekly series' last occurrence, which the user moves by two hours.
const std::int64_t lastWeekly = base + 40 * day + 9 * hour + 39 * 7 * day;
const std::string movedWeekly =
    item("VEVENT", "UID:weekly\r\nRECURRENCE-ID;TZID=Europe/Berlin:" + wall(lastWeekly) +
                       "\r\nDTSTART;TZID=Europe/Berlin:" + wall(lastWeekly + 2 * hour) +
                       "\r\nDTEND;TZID=Europe/Berlin:" + wall(lastWeekly + 3 * hour) + "\r\n");

const std::string alarm = "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT15M\r\nEND:VALARM\r\n";

std::vector<std::string> eventItems() {
  return {
      item("VEVENT", "UID:meeting\r\nDTSTART:" + utc(base + 9 * hour) +
                         "\r\nDTEND:" + utc(base + 10 * hour) +
                         "\r\nTRANSP:TRANSPARENT\r\nSTATUS:CONFIRMED\r\n"
                         "ORGANIZER;CN=Me:mailto:ME@example.org\r\n"
                         "ATTENDEE;ROLE=CHAIR;PARTSTAT=ACCEPTED:mailto:me@example.org\r\n"
                         "ATTENDEE;CUTYPE=ROOM:mailto:room@example.org\r\n"
                         "DESCRIPTION:agenda\r\nLOCATION:Room 1\r\n" +
                         alarm),
      item("VEVENT", "UID:holiday\r\nDTSTART;VALUE=DATE:" + date(base + 2 * day) +
                         "\r\nDTEND;VALUE=DATE:" + date(base + 3 * day) +
                         "\r\nSTATUS:CANCELLED\r\n"
                         "ORGANIZER;CUTYPE=GROUP;PARTSTAT=TENTATIVE:mailto:team@example.org\r\n"),
      // Forty weeks cross a change of daylight-saving time: 09:00 stays 09:00 in Berlin.
      item("VEVENT", "UID:weekly\r\nDTSTART;TZID=Europe/Berlin:" +
                         wall(base + 40 * day + 9 * hour) + "\r\nDTEND;TZID=Europe/Berlin:" +
                         wall(base + 40 * day + 10 * hour) + "\r\nRRULE:FREQ=WEEKLY;COUNT=40\r\n"),
      // Began 3.3 years ago and never ends: only the occurrences of the four years count.
      item("VEVENT", "UID:fortnightly\r\nDTSTART:" + utc(base - 1200 * day + 12 * hour) +
                         "\r\nDTEND:" + utc(base - 1200 * day + 13 * hour) +
                         "\r\nRRULE:FREQ=WEEKLY;INTERVAL=2\r\n"),
      item("VEVENT", "UID:long-ago\r\nDTSTART:" + utc(base - 1200 * day) +
                         "\r\nDTEND:" + utc(base - 1200 * day + hour) + "\r\n"),
  };
}

std::vector<std::string> taskItems() {
  return {
      item("VTODO", "UID:task-a\r\nDTSTART:" + utc(base) + "\r\nDUE;VALUE=DATE:" +
                        date(base + 7 * day) + "\r\nCOMPLETED:" + utc(base + day) +
                        "\r\nPRIORITY:1\r\nDESCRIPTION:steps\r\n"
                        "LOCATION:Shop\r\nATTENDEE:mailto:you@example.org\r\n"
                        "RRULE:FREQ=WEEKLY\r\n" +
                        alarm),
      // Done, without saying when.
      item("VTODO",
           "UID:task-b\r\nSUMMARY:call\r\nSTATUS:COMPLETED\r\nPRIORITY:5\r\n"
           "DUE;TZID=Europe/Berlin:" +
               wall(base + 3 * day + 17 * hour) + "\r\n"),
  };
}

// Dates of the profile that describes the same items
// (tests/data/linux/calendars-profile.json, a template): a number is that many seconds
// after `base`, {"berlin": N} the instant a Berlin wall clock shows base + N.
void resolveDates(json& value, std::int64_t movedModified) {
  for (auto& [key, member] : value.items()) {
    if (member.is_object() && member.contains("berlin")) {
      member = inBerlin(base + member["berlin"].get<std::int64_t>());
    } else if (member == "stamped by EDS") {
      member = movedModified;
    } else if (key.ends_with("Date") && member.is_number()) {
      member = base + member.get<std::int64_t>();
    } else if (member.is_structured()) {
      resolveDates(member, movedModified);
    }
  }
}

// Adds the items to a built-in calendar or task list through EDS's own client,
// then applies `change` to the one occurrence it names, and tells when EDS
// stamped that change (it sets LAST-MODIFIED itself).
void addItems(ESource* source, ECalClientSourceType type, const std::vector<std::string>& items,
              const std::string& change = {}, std::int64_t* changedAt = nullptr) {
  GError* raw = nullptr;
  const GObjectRef<EClient> client(
      e_cal_client_connect_sync(source, type, static_cast<guint32>(-1), nullptr, &raw));
  GErrorRef error(raw);
  ASSERT_TRUE(client) << error->message;
  auto* calendar = E_CAL_CLIENT(client.get());
  ASSERT_TRUE(e_cal_client_add_timezone_sync(
      calendar, i_cal_timezone_get_builtin_timezone("Europe/Berlin"), nullptr, &raw));
  for (const std::string& text : items) {
    const GObjectRef<ICalComponent> component(i_cal_component_new_from_string(text.c_str()));
    ASSERT_TRUE(component) << text;
    gchar* uid = nullptr;
    const gboolean created = e_cal_client_create_object_sync(
        calendar, component.get(), E_CAL_OPERATION_FLAG_NONE, &uid, nullptr, &raw);
    g_free(uid);
    error.reset(raw);
    ASSERT_TRUE(created) << error->message;
  }
  if (change.empty()) return;
  const GObjectRef<ICalComponent> changed(i_cal_component_new_from_string(change.c_str()));
  ASSERT_TRUE(e_cal_client_modify_object_sync(calendar, changed.get(), E_CAL_OBJ_MOD_THIS,
                                              E_CAL_OPERATION_FLAG_NONE, nullptr, &raw));
  GSList* stored = nullptr;
  ASSERT_TRUE(e_cal_client_get_objects_for_uid_sync(
      calendar, i_cal_component_get_uid(changed.get()), &stored, nullptr, &raw));
  for (GSList* each = stored; each != nullptr; each = each->next) {
    auto* component = e_cal_component_get_icalcomponent(static_cast<ECalComponent*>(each->data));
    if (i_cal_component_count_properties(component, I_CAL_RECURRENCEID_PROPERTY) == 0) continue;
    const GObjectRef<ICalProperty> modified(
        i_cal_component_get_first_property(component, I_CAL_LASTMODIFIED_PROPERTY));
    const GObjectRef<ICalTime> time(i_cal_property_get_lastmodified(modified.get()));
    *changedAt = i_cal_time_as_timet(time.get());
  }
  e_util_free_nullable_object_slist(stored);
}

// The user's mail account, which gives the user's own address, and a
// subscribed calendar whose server does not answer: source files that EDS
// reads when it starts, before the test's first question to it.
void addSources(const char* address) {
  const std::filesystem::path sources =
      std::filesystem::path(g_get_user_config_dir()) / "evolution" / "sources";
  std::filesystem::create_directories(sources);
  std::ofstream(sources / "me.source") << "[Data Source]\nDisplayName=Me\nEnabled=true\n\n"
                                       << "[Mail Identity]\nAddress=" << address << "\n";
  std::ofstream(sources / "holidays.source")
      << "[Data Source]\nDisplayName=Holidays\nEnabled=true\n\n"
      << "[Calendar]\nBackendName=webcal\nColor=#ff0000\n\n"
      << "[WebDAV Backend]\nResourcePath=/holidays.ics\nResourceQuery=\n\n"
      << "[Authentication]\nHost=127.0.0.1\nPort=9\n";
}

json sortedRows(Element element) {
  json rows = sectionValues(std::move(element));
  std::sort(rows.begin(), rows.end());
  return rows;
}

// The rows of one sorted list that the other lacks, which a failure shows
// rather than hundreds of occurrences.
json missingFrom(const json& others, const json& rows) {
  json missing = json::array();
  std::set_difference(rows.begin(), rows.end(), others.begin(), others.end(),
                      std::back_inserter(missing));
  return missing;
}

TEST(EdsCalendars, RowsMatchTheProfileOfTheSameItems) {
  addSources("me@example.org");
  GError* raw = nullptr;
  const GObjectRef<ESourceRegistry> registry(e_source_registry_new_sync(nullptr, &raw));
  const GErrorRef error(raw);
  ASSERT_TRUE(registry) << error->message;
  const GObjectRef<ESource> calendar(e_source_registry_ref_builtin_calendar(registry.get()));
  const GObjectRef<ESource> tasks(e_source_registry_ref_builtin_task_list(registry.get()));
  std::int64_t movedModified = 0;
  ASSERT_NO_FATAL_FAILURE(addItems(calendar.get(), E_CAL_CLIENT_SOURCE_TYPE_EVENTS, eventItems(),
                                   movedWeekly, &movedModified));
  ASSERT_NO_FATAL_FAILURE(addItems(tasks.get(), E_CAL_CLIENT_SOURCE_TYPE_TASKS, taskItems()));

  platform::LinuxPlatform phone("eds-calendar-test", {},
                                [](const std::string& store) { return store != "contacts"; });
  for (const std::int64_t type : {platform::EntityType::event, platform::EntityType::reminder}) {
    phone.events().requestAccess(type, [](bool granted, auto) { ASSERT_TRUE(granted); });
  }
  const testing_support::TemporaryDirectory directory;
  json profile = json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR "/linux/calendars-profile.json"));
  resolveDates(profile, movedModified);
  std::ofstream(directory / "profile.json") << profile.dump();
  const auto described = platform::ProfilePlatform::load((directory / "profile.json").string());

  EXPECT_EQ(sectionValues(CalendarExtractor(phone).extract()),
            sectionValues(CalendarExtractor(*described).extract()));
  const json rows = sortedRows(CalendarEventExtractor("CalendarEvents", phone).extract());
  const json expected = sortedRows(CalendarEventExtractor("CalendarEvents", *described).extract());
  EXPECT_TRUE(rows == expected) << "only on Linux: " << missingFrom(expected, rows)
                                << "\nonly in the profile: " << missingFrom(rows, expected);
  EXPECT_GT(rows.size(), 40U + 52U);  // the weekly series and two years of fortnights each way
  EXPECT_EQ(sectionValues(CalendarReminderExtractor("CalendarReminders", phone).extract()),
            sectionValues(CalendarReminderExtractor("CalendarReminders", *described).extract()));
}

// Each value of the participant and event parameters, as the calendar port
// numbers them. The organizer's own parameters win over those of its attendee
// entry, whose address matches whatever its case; iCalendar's default kind is a
// person.
TEST(EdsCalendars, ParametersMapToThePortsRawValues) {
  struct Case {
    std::string lines;
    std::int64_t availability, status, role, participantStatus, kind;
    bool me;
  };
  const Case cases[] = {
      {"ORGANIZER;ROLE=REQ-PARTICIPANT;PARTSTAT=NEEDS-ACTION;CUTYPE=INDIVIDUAL:mailto:a@x\r\n"
       "STATUS:TENTATIVE\r\nTRANSP:OPAQUE\r\n",
       0, 2, 1, 1, 1, true},
      {"ORGANIZER;ROLE=OPT-PARTICIPANT;PARTSTAT=DECLINED;CUTYPE=RESOURCE:mailto:b@x\r\n"
       "STATUS:CONFIRMED\r\nTRANSP:TRANSPARENT\r\n",
       1, 1, 2, 3, 3, false},
      {"ORGANIZER;ROLE=NON-PARTICIPANT;PARTSTAT=DELEGATED;CUTYPE=ROOM:mailto:A@X\r\n"
       "STATUS:CANCELLED\r\n",
       0, 3, 4, 5, 2, true},
      {"ORGANIZER;ROLE=CHAIR;PARTSTAT=COMPLETED;CUTYPE=GROUP:mailto:b@x\r\n", 0, 0, 3, 6, 4, false},
      {"ORGANIZER;PARTSTAT=IN-PROCESS;CUTYPE=UNKNOWN:mailto:b@x\r\n", 0, 0, 0, 7, 0, false},
      {"ORGANIZER;PARTSTAT=INPROCESS;ROLE=X-HOST:mailto:b@x\r\n", 0, 0, 0, 7, 1, false},
      {"ORGANIZER;PARTSTAT=ACCEPTED:mailto:b@x\r\n"
       "ATTENDEE;ROLE=OPT-PARTICIPANT;PARTSTAT=DECLINED;CUTYPE=ROOM:mailto:B@x\r\n",
       0, 0, 2, 2, 2, false},
      {"ORGANIZER:mailto:b@x\r\nATTENDEE;ROLE=CHAIR:mailto:c@x\r\n", 0, 0, 0, 0, 1, false},
  };
  const platform::CalendarItemContext context{
      nullptr, "calendar", i_cal_timezone_get_utc_timezone(), {"a@x"}};
  for (const Case& c : cases) {
    const std::string text =
        "BEGIN:VEVENT\r\nUID:u\r\nDTSTART:20260101T090000Z\r\n" + c.lines + "END:VEVENT\r\n";
    const GObjectRef<ICalComponent> component(i_cal_component_new_from_string(text.c_str()));
    const GObjectRef<ICalTime> start(i_cal_component_get_dtstart(component.get()));
    const auto event =
        platform::eventFromComponent(component.get(), start.get(), start.get(), context);
    ASSERT_TRUE(event.organizer) << c.lines;
    EXPECT_EQ(std::tuple(event.availability, event.status, event.organizer->participantRole,
                         event.organizer->participantStatus, event.organizer->participantType,
                         event.organizer->isCurrentUser),
              std::tuple(c.availability, c.status, c.role, c.participantStatus, c.kind, c.me))
        << c.lines;
  }
}

}  // namespace
}  // namespace tavrin
