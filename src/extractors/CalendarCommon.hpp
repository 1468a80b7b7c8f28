#pragma once

// Steps the three calendar-database sources share.

#include "dataset/Element.hpp"
#include "dataset/ExtractorBase.hpp"
#include "dataset/Row.hpp"
#include "extractors/AccessGate.hpp"

#include <tavrin/platform/EventStore.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

// Whether the store grants access to the entity type; when it does not, records
// the access-denied entry for `deniedText` in `element`.
inline bool grantsCalendarAccess(platform::EventStore& store, std::int64_t entityType,
                                 std::string_view deniedText, Element& element) {
  return grantsAccess(store.authorizationStatus(entityType), deniedText, element);
}

// The identifiers of every calendar of the entity type, in the store's order.
inline std::vector<std::string> calendarIdentifiers(platform::EventStore& store,
                                                    std::int64_t entityType) {
  std::vector<std::string> identifiers;
  for (platform::Calendar& calendar : store.calendars(entityType)) {
    identifiers.push_back(std::move(calendar.calendarIdentifier));
  }
  return identifiers;
}

// Appends the values that end both an event row and a reminder row: the four
// presence flags, whether a location is given, the creation and modification
// dates, the time zone's identifier and the number of attendees (null without
// an attendee list).
template <typename CalendarItem>
void appendCalendarItemValues(Row& row, const CalendarItem& item) {
  row.append(item.hasNotes);
  row.append(item.hasAttendees);
  row.append(item.hasAlarms);
  row.append(item.hasRecurrenceRules);
  row.append(ExtractorBase::hasText(item.location));
  row.append(item.creationDate);
  row.append(item.lastModifiedDate);
  row.append(item.timeZone);
  row.append(item.attendeeCount);
}

}  // namespace tavrin
