#include "platform/linux/edsCalendarItem.hpp"

#include "platform/linux/GObjectRef.hpp"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

namespace tavrin::platform {
namespace {

using Property = GObjectRef<ICalProperty>;
using Parameter = GObjectRef<ICalParameter>;
using Time = GObjectRef<ICalTime>;

Property firstProperty(ICalComponent* component, ICalPropertyKind kind) {
  return Property(i_cal_component_get_first_property(component, kind));
}

bool hasProperty(ICalComponent* component, ICalPropertyKind kind) {
  return i_cal_component_count_properties(component, kind) > 0;
}

// A text the user typed; absent when the item has none.
std::optional<std::string> text(const char* value) {
  if (value == nullptr) return std::nullopt;
  return std::string(value);
}

// The instant a date-time denotes: in its own zone, as UTC, or, floating or a
// whole date, in the device's zone at the start of the day.
std::optional<double> seconds(const ICalTime* time, const CalendarItemContext& context) {
  if (time == nullptr || i_cal_time_is_null_time(time)) return std::nullopt;
  if (i_cal_time_is_utc(time) || i_cal_time_get_tzid(time) == nullptr) {
    return static_cast<double>(i_cal_time_as_timet_with_zone(
        time, i_cal_time_is_utc(time) ? i_cal_timezone_get_utc_timezone() : context.floating));
  }
  const Time utc(i_cal_time_convert_to_zone(time, i_cal_timezone_get_utc_timezone()));
  return static_cast<double>(i_cal_time_as_timet(utc.get()));
}

std::optional<double> seconds(const Time& time, const CalendarItemContext& context) {
  return seconds(time.get(), context);
}

// The instant of a date-time property, in the zone its TZID names as the
// calendar resolves it.
std::optional<double> propertyTime(ICalComponent* component, ICalPropertyKind kind,
                                   ICalTime* (*read)(ICalProperty*),
                                   const CalendarItemContext& context) {
  const Property property = firstProperty(component, kind);
  if (!property) return std::nullopt;
  const Time time(read(property.get()));
  const Parameter tzid(i_cal_property_get_first_parameter(property.get(), I_CAL_TZID_PARAMETER));
  ICalTimezone* zone = nullptr;
  if (time && !i_cal_time_is_null_time(time.get()) && tzid &&
      e_cal_client_get_timezone_sync(context.client, i_cal_parameter_get_tzid(tzid.get()), &zone,
                                     nullptr, nullptr) &&
      zone != nullptr) {
    return static_cast<double>(i_cal_time_as_timet_with_zone(time.get(), zone));
  }
  return seconds(time, context);
}

// The IANA name of a date-time's zone: UTC, or the location of its TZID
// ("Europe/Berlin" for libical's "/freeassociation.sourceforge.net/Europe/Berlin");
// absent for a floating time or a whole date.
std::optional<std::string> zoneName(const Time& time, const CalendarItemContext& context) {
  if (!time || i_cal_time_is_null_time(time.get()) || i_cal_time_is_date(time.get())) {
    return std::nullopt;
  }
  if (i_cal_time_is_utc(time.get())) return "UTC";
  const char* tzid = i_cal_time_get_tzid(time.get());
  if (tzid == nullptr) return std::nullopt;
  ICalTimezone* zone = nullptr;
  if (e_cal_client_get_timezone_sync(context.client, tzid, &zone, nullptr, nullptr) &&
      zone != nullptr) {
    if (const char* location = i_cal_timezone_get_location(zone); location && *location) {
      return location;
    }
  }
  std::string_view name(tzid);
  constexpr std::string_view builtin = "/freeassociation.sourceforge.net/";
  if (name.starts_with(builtin)) name.remove_prefix(builtin.size());
  return std::string(name);
}

std::string lowerAddress(const char* address) {
  std::string result(address != nullptr ? address : "");
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (result.starts_with("mailto:")) result.erase(0, 7);
  return result;
}

// The participant's role, status and kind, as the calendar port numbers them.
std::int64_t roleOf(ICalParameterRole role) {
  switch (role) {
    case I_CAL_ROLE_REQPARTICIPANT: return 1;
    case I_CAL_ROLE_OPTPARTICIPANT: return 2;
    case I_CAL_ROLE_CHAIR: return 3;
    case I_CAL_ROLE_NONPARTICIPANT: return 4;
    default: return 0;
  }
}
std::int64_t statusOf(ICalParameterPartstat status) {
  switch (status) {
    case I_CAL_PARTSTAT_NEEDSACTION: return 1;
    case I_CAL_PARTSTAT_ACCEPTED: return 2;
    case I_CAL_PARTSTAT_DECLINED: return 3;
    case I_CAL_PARTSTAT_TENTATIVE: return 4;
    case I_CAL_PARTSTAT_DELEGATED: return 5;
    case I_CAL_PARTSTAT_COMPLETED: return 6;
    case I_CAL_PARTSTAT_INPROCESS: return 7;
    default: return 0;
  }
}
std::int64_t kindOf(ICalParameterCutype kind) {
  switch (kind) {
    case I_CAL_CUTYPE_INDIVIDUAL: return 1;
    case I_CAL_CUTYPE_ROOM: return 2;
    case I_CAL_CUTYPE_RESOURCE: return 3;
    case I_CAL_CUTYPE_GROUP: return 4;
    default: return 0;
  }
}

// libical spells "in process" INPROCESS and reads the standard IN-PROCESS as
// a value it does not know, whose text it keeps.
ICalParameterPartstat partstatOf(const ICalParameter* parameter) {
  const ICalParameterPartstat status = i_cal_parameter_get_partstat(parameter);
  // The getter only reads, though its pointer is not const.
  const char* text = status == I_CAL_PARTSTAT_X
                         ? i_cal_parameter_get_xvalue(const_cast<ICalParameter*>(parameter))
                         : nullptr;
  if (text != nullptr && g_ascii_strcasecmp(text, "IN-PROCESS") == 0) {
    return I_CAL_PARTSTAT_INPROCESS;
  }
  return status;
}

// The parameter of a participant property; absent when it has none.
template <typename Value>
std::optional<Value> parameter(ICalProperty* property, ICalParameterKind kind,
                               Value (*read)(const ICalParameter*)) {
  const Parameter found(i_cal_property_get_first_parameter(property, kind));
  if (!found) return std::nullopt;
  return read(found.get());
}

// The attendee property that names the same address as the organizer.
Property attendeeOf(ICalComponent* component, const std::string& address) {
  for (Property attendee = firstProperty(component, I_CAL_ATTENDEE_PROPERTY); attendee;
       attendee.reset(i_cal_component_get_next_property(component, I_CAL_ATTENDEE_PROPERTY))) {
    if (lowerAddress(i_cal_property_get_attendee(attendee.get())) == address) return attendee;
  }
  return Property();
}

// The organizer: whether it is the user (one of the user's addresses), its
// name (CN), and its role, status and kind from its own parameters, else from
// the attendee entry of the same address. Without either, the role and status
// are unknown and the kind is a person, the default of a calendar user.
std::optional<Participant> organizerOf(ICalComponent* component,
                                       const CalendarItemContext& context) {
  const Property organizer = firstProperty(component, I_CAL_ORGANIZER_PROPERTY);
  if (!organizer) return std::nullopt;
  const std::string address = lowerAddress(i_cal_property_get_organizer(organizer.get()));
  const Property attendee = attendeeOf(component, address);
  const auto either = [&](ICalParameterKind kind, auto read) {
    auto value = parameter(organizer.get(), kind, read);
    if (!value && attendee) value = parameter(attendee.get(), kind, read);
    return value;
  };
  Participant participant;
  participant.isCurrentUser = context.me.count(address) > 0;
  if (auto name = parameter(organizer.get(), I_CAL_CN_PARAMETER, i_cal_parameter_get_cn)) {
    participant.name = text(*name);
  }
  participant.participantRole =
      roleOf(either(I_CAL_ROLE_PARAMETER, i_cal_parameter_get_role).value_or(I_CAL_ROLE_NONE));
  participant.participantStatus =
      statusOf(either(I_CAL_PARTSTAT_PARAMETER, partstatOf).value_or(I_CAL_PARTSTAT_NONE));
  participant.participantType = kindOf(
      either(I_CAL_CUTYPE_PARAMETER, i_cal_parameter_get_cutype).value_or(I_CAL_CUTYPE_INDIVIDUAL));
  return participant;
}

// An item's identifier: its calendar's UID, then its own.
std::string itemIdentifier(ICalComponent* component, const CalendarItemContext& context) {
  const char* uid = i_cal_component_get_uid(component);
  return context.calendarUid + "/" + (uid != nullptr ? uid : "");
}

std::optional<std::int64_t> attendeeCount(ICalComponent* component) {
  const int count = i_cal_component_count_properties(component, I_CAL_ATTENDEE_PROPERTY);
  if (count == 0) return std::nullopt;
  return count;
}

// Notes and a place count when they hold text; the flags follow the item's
// own properties. Both kinds of item share these.
template <typename Item>
void fillShared(Item& item, ICalComponent* component, const CalendarItemContext& context) {
  const char* description = i_cal_component_get_description(component);
  item.hasNotes = description != nullptr && *description != '\0';
  item.attendeeCount = attendeeCount(component);
  item.hasAttendees = item.attendeeCount.has_value();
  item.hasAlarms = i_cal_component_count_components(component, I_CAL_VALARM_COMPONENT) > 0;
  item.location = text(i_cal_component_get_location(component));
  item.creationDate =
      propertyTime(component, I_CAL_CREATED_PROPERTY, i_cal_property_get_created, context);
  item.lastModifiedDate = propertyTime(component, I_CAL_LASTMODIFIED_PROPERTY,
                                       i_cal_property_get_lastmodified, context);
}

// TRANSP: free or busy, the two availabilities iCalendar has.
std::int64_t availabilityOf(ICalComponent* component) {
  const Property transparency = firstProperty(component, I_CAL_TRANSP_PROPERTY);
  const bool free =
      transparency && i_cal_property_get_transp(transparency.get()) == I_CAL_TRANSP_TRANSPARENT;
  return free ? 1 : 0;
}

std::int64_t eventStatusOf(ICalComponent* component) {
  switch (i_cal_component_get_status(component)) {
    case I_CAL_STATUS_CONFIRMED: return 1;
    case I_CAL_STATUS_TENTATIVE: return 2;
    case I_CAL_STATUS_CANCELLED: return 3;
    default: return 0;
  }
}

}  // namespace

Event eventFromComponent(ICalComponent* component, const ICalTime* start, const ICalTime* end,
                         const CalendarItemContext& context) {
  Event event;
  event.eventIdentifier = itemIdentifier(component, context);
  event.calendarItemIdentifier = *event.eventIdentifier;
  event.availability = availabilityOf(component);
  event.startDate = seconds(start, context);
  event.endDate = seconds(end, context);
  event.isAllDay = start != nullptr && i_cal_time_is_date(start);
  // An occurrence's original start is its RECURRENCE-ID, which a moved
  // occurrence keeps; a single event occurs at its start.
  event.occurrenceDate = propertyTime(component, I_CAL_RECURRENCEID_PROPERTY,
                                      i_cal_property_get_recurrenceid, context);
  if (!event.occurrenceDate) event.occurrenceDate = event.startDate;
  const bool rules =
      hasProperty(component, I_CAL_RRULE_PROPERTY) || hasProperty(component, I_CAL_RDATE_PROPERTY);
  const bool occurrence = hasProperty(component, I_CAL_RECURRENCEID_PROPERTY);
  // An occurrence stored apart from its series (moved, or changed alone) has
  // no rules of its own; the generated ones carry their series' rules.
  event.isDetached = occurrence && !rules;
  event.hasRecurrenceRules = rules || occurrence;
  event.organizer = organizerOf(component, context);
  event.status = eventStatusOf(component);
  fillShared(event, component, context);
  event.timeZone = zoneName(Time(i_cal_component_get_dtstart(component)), context);
  return event;
}

Reminder reminderFromComponent(ICalComponent* component, const CalendarItemContext& context) {
  Reminder reminder;
  reminder.calendarItemIdentifier = itemIdentifier(component, context);
  const Time start(i_cal_component_get_dtstart(component));
  const Time due(i_cal_component_get_due(component));
  reminder.startDate = seconds(start, context);
  reminder.dueDate = seconds(due, context);
  reminder.completionDate =
      propertyTime(component, I_CAL_COMPLETED_PROPERTY, i_cal_property_get_completed, context);
  reminder.isCompleted = reminder.completionDate.has_value() ||
                         i_cal_component_get_status(component) == I_CAL_STATUS_COMPLETED;
  if (const Property priority = firstProperty(component, I_CAL_PRIORITY_PROPERTY)) {
    reminder.priority = std::clamp(i_cal_property_get_priority(priority.get()), 0, 9);
  }
  reminder.hasRecurrenceRules = hasProperty(component, I_CAL_RRULE_PROPERTY);
  fillShared(reminder, component, context);
  reminder.timeZone = zoneName(start, context);
  if (!reminder.timeZone) reminder.timeZone = zoneName(due, context);
  return reminder;
}

}  // namespace tavrin::platform
