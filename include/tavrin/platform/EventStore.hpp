#pragma once

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::platform {

/// Entity types of the calendar database.
namespace EntityType {
constexpr std::int64_t event = 0;     ///< Calendar events.
constexpr std::int64_t reminder = 1;  ///< Reminders.
}  // namespace EntityType

/// The account a calendar belongs to.
struct CalendarSource {
  std::string sourceIdentifier;  ///< Unique within the store.
  std::int64_t sourceType = 0;   ///< Raw value.
  std::string title;             ///< The account's name, as the user sees it.
};

/// A calendar (or reminder list).
struct Calendar {
  std::string calendarIdentifier;  ///< Unique within the store.
  std::optional<std::int64_t>
      colorComponentCount;                         ///< Components of its colour; absent: no colour.
  bool isImmutable = false;                        ///< Its items cannot be changed.
  std::int64_t type = 0;                           ///< Raw value.
  std::optional<CalendarSource> source;            ///< Its account; absent when it has none.
  bool isSubscribed = false;                       ///< A subscribed (read-only, remote) calendar.
  std::uint64_t supportedEventAvailabilities = 0;  ///< Raw option set.
};

/// The organizer (or another participant) of an event.
struct Participant {
  bool isCurrentUser = false;          ///< The participant is the device's user.
  std::optional<std::string> name;     ///< The display name; absent when there is none.
  std::int64_t participantRole = 0;    ///< Raw value.
  std::int64_t participantStatus = 0;  ///< Raw value.
  std::int64_t participantType = 0;    ///< Raw value.
};

/// One event, or one occurrence of a recurring event. Dates are seconds since 1970.
struct Event {
  std::optional<std::string> eventIdentifier;  ///< Absent until the event is saved.
  std::string calendarItemIdentifier;          ///< Unique within the store.
  std::int64_t availability = 0;               ///< Raw value.
  std::optional<double> startDate;             ///< Absent when the event has none.
  std::optional<double> endDate;               ///< Absent when the event has none.
  bool isAllDay = false;                       ///< Lasts whole days.
  std::optional<double> occurrenceDate;  ///< This occurrence's original start; absent if none.
  bool isDetached = false;               ///< An occurrence changed apart from its series.
  std::optional<Participant> organizer;  ///< Absent when the event has none.
  std::int64_t status = 0;               ///< Raw value.
  ///@{
  /// Whether the event has notes, attendees, alarms and recurrence rules.
  bool hasNotes = false, hasAttendees = false, hasAlarms = false, hasRecurrenceRules = false;
  ///@}
  std::optional<std::string> location;        ///< The place as entered; absent when not set.
  std::optional<double> creationDate;         ///< Absent when unknown.
  std::optional<double> lastModifiedDate;     ///< Absent when unknown.
  std::optional<std::string> timeZone;        ///< IANA name; absent for floating events.
  std::optional<std::int64_t> attendeeCount;  ///< Absent when there is no attendee list.
};

/// One reminder. Dates are seconds since 1970; the start and due dates are the
/// instants their date components denote, absent when they denote none.
struct Reminder {
  std::string calendarItemIdentifier;    ///< Unique within the store.
  std::optional<double> startDate;       ///< When work on it starts.
  std::optional<double> dueDate;         ///< When it is due.
  bool isCompleted = false;              ///< It has been completed.
  std::optional<double> completionDate;  ///< When it was completed; absent if it is not.
  std::int64_t priority = 0;             ///< 0 none, 1 highest to 9 lowest.
  ///@{
  /// Whether the reminder has notes, attendees, alarms and recurrence rules.
  bool hasNotes = false, hasAttendees = false, hasAlarms = false, hasRecurrenceRules = false;
  ///@}
  std::optional<std::string> location;        ///< The place as entered; absent when not set.
  std::optional<double> creationDate;         ///< Absent when unknown.
  std::optional<double> lastModifiedDate;     ///< Absent when unknown.
  std::optional<std::string> timeZone;        ///< IANA name; absent for floating reminders.
  std::optional<std::int64_t> attendeeCount;  ///< Absent when there is no attendee list.
};

/// Completion of a reminder fetch: the reminders, or absent when the platform
/// delivers no list. May run on another thread, exactly once.
using RemindersHandler = std::function<void(std::optional<std::vector<Reminder>> reminders)>;

/// The calendar database. Calls answer on the calling thread unless stated otherwise.
class EventStore {
 public:
  virtual ~EventStore() = default;

  /// The raw authorization status for an entity type.
  virtual std::int64_t authorizationStatus(std::int64_t entityType) = 0;
  /// Asks the user for access; `handler` runs once, possibly on another thread.
  virtual void requestAccess(std::int64_t entityType, AccessHandler handler) = 0;
  /// Every calendar of an entity type, in a stable order.
  virtual std::vector<Calendar> calendars(std::int64_t entityType) = 0;
  /// Every event, and every occurrence of a recurring event, in the given calendars
  /// that overlaps the range from `start` to `end` (seconds since 1970).
  virtual std::vector<Event> events(double start, double end,
                                    const std::vector<std::string>& calendarIdentifiers) = 0;
  /// Fetches the reminders of the given lists; `completion` runs once, possibly on
  /// another thread.
  virtual void fetchReminders(const std::vector<std::string>& calendarIdentifiers,
                              RemindersHandler completion) = 0;
};

}  // namespace tavrin::platform
