#pragma once

#include <tavrin/platform/EventStore.hpp>

#include <libecal/libecal.h>

#include <set>
#include <string>

namespace tavrin::platform {

// What turns a calendar item into the port's values besides the item itself.
struct CalendarItemContext {
  ECalClient* client;        // resolves the items' TZIDs
  std::string calendarUid;   // prefixes the items' identifiers
  ICalTimezone* floating;    // the zone of floating times and dates: the device's
  std::set<std::string> me;  // the user's e-mail addresses, lower case
};

// One occurrence of an event (VEVENT) from `start` to `end`, as the occurrences
// of a calendar's events are generated.
Event eventFromComponent(ICalComponent* component, const ICalTime* start, const ICalTime* end,
                         const CalendarItemContext& context);

// One task (VTODO) as a reminder.
Reminder reminderFromComponent(ICalComponent* component, const CalendarItemContext& context);

}  // namespace tavrin::platform
