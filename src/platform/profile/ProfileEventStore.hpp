#pragma once

#include "platform/profile/CompletionThreads.hpp"
#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/Permissions.hpp"
#include "platform/profile/RecurrenceExpander.hpp"

#include <map>

namespace tavrin::platform {

// The calendar database of a profile. As on a phone, calendars, events and
// reminders are readable only while their permission is authorized (3);
// otherwise the queries find nothing.
class ProfileEventStore final : public EventStore {
 public:
  // The longest range one event query covers; a longer one is cut to its
  // start plus this, as the phone's store cuts it to four years.
  static constexpr double longestRange = 4 * 366 * 86400.0;

  ProfileEventStore(ProfileCalendars calendars, std::vector<ProfileEvent> events,
                    std::optional<std::vector<ProfileReminder>> reminders,
                    std::string deviceTimeZone, Permissions& permissions,
                    CompletionThreads& threads);

  // Entity type 0 is calendar events, 1 reminders; any other is restricted (1).
  std::int64_t authorizationStatus(std::int64_t entityType) override;
  // Prompts for entity types 0 and 1; refuses any other with an error.
  void requestAccess(std::int64_t entityType, AccessHandler handler) override;
  std::vector<Calendar> calendars(std::int64_t entityType) override;
  // In profile order: each plain event that overlaps the closed range, then
  // (in the same place) each overlapping occurrence of a recurring one. A
  // missing start or end date leaves the event open on that side.
  std::vector<Event> events(double start, double end,
                            const std::vector<std::string>& calendarIdentifiers) override;
  // Delivers on another thread: the reminders of the given lists, or no list
  // when the profile's reminders are null.
  void fetchReminders(const std::vector<std::string>& calendarIdentifiers,
                      RemindersHandler completion) override;

 private:
  // An event in the range, or one occurrence of a recurring event.
  struct Match {
    const ProfileEvent* event;
    std::optional<double> occurrence;  // the occurrence's start; absent for a single event
  };

  bool authorized(std::int64_t entityType) const;
  void appendOccurrences(const ProfileEvent& event, double start, double end,
                         std::vector<Match>& out) const;

  const ProfileCalendars _calendars;
  const std::vector<ProfileEvent> _events;
  const std::optional<std::vector<ProfileReminder>> _reminders;
  const std::string _deviceTimeZone;
  std::map<std::string, RecurrenceExpander> _expanders;  // by time zone
  Permissions& _permissions;
  CompletionThreads& _threads;
};

}  // namespace tavrin::platform
