#include "platform/profile/ProfileEventStore.hpp"

#include <algorithm>
#include <limits>

namespace tavrin::platform {

namespace {

std::optional<Permission> permissionOf(std::int64_t entityType) {
  switch (entityType) {
    case EntityType::event: return Permission::calendarEvents;
    case EntityType::reminder: return Permission::reminders;
    default: return {};
  }
}

bool contains(const std::vector<std::string>& identifiers, const std::string& identifier) {
  return std::find(identifiers.begin(), identifiers.end(), identifier) != identifiers.end();
}

}  // namespace

ProfileEventStore::ProfileEventStore(ProfileCalendars calendars, std::vector<ProfileEvent> events,
                                     std::optional<std::vector<ProfileReminder>> reminders,
                                     std::string deviceTimeZone, Permissions& permissions,
                                     CompletionThreads& threads)
    : _calendars(std::move(calendars)),
      _events(std::move(events)),
      _reminders(std::move(reminders)),
      _deviceTimeZone(std::move(deviceTimeZone)),
      _permissions(permissions),
      _threads(threads) {
  for (const auto& event : _events) {
    if (!event.recurrence) continue;
    const auto& zone = event.event.timeZone.value_or(_deviceTimeZone);
    _expanders.try_emplace(zone, zone);
  }
}

bool ProfileEventStore::authorized(std::int64_t entityType) const {
  const auto permission = permissionOf(entityType);
  return permission && _permissions.status(*permission) == AuthorizationStatus::authorized;
}

std::int64_t ProfileEventStore::authorizationStatus(std::int64_t entityType) {
  const auto permission = permissionOf(entityType);
  return permission ? _permissions.status(*permission) : AuthorizationStatus::restricted;
}

void ProfileEventStore::requestAccess(std::int64_t entityType, AccessHandler handler) {
  if (const auto permission = permissionOf(entityType)) {
    _permissions.requestAccess(*permission, std::move(handler));
  } else {
    _permissions.refuseEntityType(entityType, std::move(handler));
  }
}

std::vector<Calendar> ProfileEventStore::calendars(std::int64_t entityType) {
  if (!authorized(entityType)) return {};
  return entityType == EntityType::event ? _calendars.events : _calendars.reminders;
}

std::vector<Event> ProfileEventStore::events(double start, double end,
                                             const std::vector<std::string>& calendarIdentifiers) {
  if (!authorized(EntityType::event) || !(start <= end)) return {};
  end = std::min(end, start + longestRange);
  constexpr double infinity = std::numeric_limits<double>::infinity();
  // What matches is found first and copied once, into a list of its exact
  // size: a list of events grown by doubling would leave as much again behind
  // in freed memory, tens of megabytes on a large calendar.
  std::vector<Match> matches;
  for (const auto& event : _events) {
    if (stopRequested()) break;  // the run discards what it gets now
    if (!contains(calendarIdentifiers, event.calendarIdentifier)) continue;
    if (event.recurrence) {
      appendOccurrences(event, start, end, matches);
    } else if (event.event.startDate.value_or(-infinity) <= end &&
               event.event.endDate.value_or(infinity) >= start) {
      matches.push_back({&event, std::nullopt});
    }
  }
  std::vector<Event> found;
  found.reserve(matches.size());
  for (const auto& [event, occurrence] : matches) {
    auto& copy = found.emplace_back(event->event);
    if (!occurrence) continue;
    // Reading guarantees a recurring event both dates.
    copy.endDate = *occurrence + (*event->event.endDate - *event->event.startDate);
    copy.startDate = occurrence;
    copy.occurrenceDate = occurrence;
  }
  return found;
}

void ProfileEventStore::appendOccurrences(const ProfileEvent& event, double start, double end,
                                          std::vector<Match>& out) const {
  // Reading guarantees a recurring event both dates and a known zone.
  const double first = *event.event.startDate;
  const double duration = *event.event.endDate - first;
  const auto& expander = _expanders.at(event.event.timeZone.value_or(_deviceTimeZone));
  expander.expand(first, duration, *event.recurrence, start, end, [&](double occurrence) {
    out.push_back({&event, occurrence});
  });
}

void ProfileEventStore::fetchReminders(const std::vector<std::string>& calendarIdentifiers,
                                       RemindersHandler completion) {
  std::optional<std::vector<Reminder>> delivered;
  if (_reminders) {
    delivered.emplace();
    if (authorized(EntityType::reminder)) {
      for (const auto& reminder : *_reminders) {
        if (contains(calendarIdentifiers, reminder.calendarIdentifier)) {
          delivered->push_back(reminder.reminder);
        }
      }
    }
  }
  _threads.run([completion = std::move(completion), delivered = std::move(delivered)] {
    completion(delivered);
  });
}

}  // namespace tavrin::platform
