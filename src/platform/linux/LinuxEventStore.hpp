#pragma once

#include "platform/linux/RestrictedStore.hpp"

#include <tavrin/platform/EventStore.hpp>

namespace tavrin::platform {

// Linux has no system calendar database: access is restricted, and there is nothing to read.
class LinuxEventStore final : public RestrictedStore<EventStore> {
 public:
  std::vector<Calendar> calendars(std::int64_t) override { return {}; }
  std::vector<Event> events(double, double, const std::vector<std::string>&) override { return {}; }
  // The fetch delivers an empty list, at once and on the calling thread.
  void fetchReminders(const std::vector<std::string>&, RemindersHandler completion) override {
    completion(std::vector<Reminder>{});
  }
};

}  // namespace tavrin::platform
