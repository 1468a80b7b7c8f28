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
  std::string sourceIdentifier;
  std::int64_t sourceType = 0;  ///< Raw value.
  std::string title;
};

/// A calendar (or reminder list).
struct Calendar {
  std::string calendarIdentifier;
  std::optional<std::int64_t> colorComponentCount;  ///< Components of its colour; absent: no colour.
  bool isImmutable = false;
  std::int64_t type = 0;  ///< Raw value.
  std::optional<CalendarSource> source;
  bool isSubscribed = false;
  std::uint64_t supportedEventAvailabilities = 0;  ///< Raw option set.
};

/// The organizer (or another participant) of an event.
struct Participant {
  bool isCurrentUser = false;
  std::optional<std::string> name;
  std::int64_t participantRole = 0;    ///< Raw value.
  std::int64_t participantStatus = 0;  ///< Raw value.
  std::int64_t participantType = 0;    ///< Raw value.
};

/// One event, or one occurrence of a recurring event. Dates are seconds since 1970.
struct Event {
  std::optional<std::string> eventIdentifier;
  std::string calendarItemIdentifier;
  std::int64_t availability = 0;  ///< Raw value.
  std::optional<double> startDate, endDate;
  bool isAllDay = false;
  std::optional<double> occurrenceDate;
  bool isDetached = false;
  std::optional<Participant> organizer;
  std::int64_t status = 0;  ///< Raw value.
  bool hasNotes = false, hasAttendees = false, hasAlarms = false, hasRecurrenceRules = false;
  std::optional<std::string> location;
  std::optional<double> creationDate, lastModifiedDate;
  std::optional<std::string> timeZone;            ///< IANA name; absent for floating events.
  std::optional<std::int64_t> attendeeCount;      ///< Absent when there is no attendee list.
};

/// One reminder. Dates are seconds since 1970; the start and due dates are the
/// instants their date components denote, absent when they denote none.
struct Reminder {
  std::string calendarItemIdentifier;
  std::optional<double> startDate, dueDate;
  bool isCompleted = false;
  std::optional<double> completionDate;
  std::int64_t priority = 0;
  bool hasNotes = false, hasAttendees = false, hasAlarms = false, hasRecurrenceRules = false;
  std::optional<std::string> location;
  std::optional<double> creationDate, lastModifiedDate;
  std::optional<std::string> timeZone;
  std::optional<std::int64_t> attendeeCount;
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
