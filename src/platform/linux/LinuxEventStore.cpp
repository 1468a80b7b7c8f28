#include "platform/linux/LinuxEventStore.hpp"

#include "platform/linux/RestrictedStore.hpp"

namespace tavrin::platform {
namespace {

// Built without a calendar client, the library has no calendar to read:
// access is restricted, and there is nothing to read.
class RestrictedEventStore final : public RestrictedStore<EventStore> {
 public:
  std::vector<Calendar> calendars(std::int64_t) override { return {}; }
  std::vector<Event> events(double, double, const std::vector<std::string>&) override { return {}; }
  // The fetch delivers an empty list, at once and on the calling thread.
  void fetchReminders(const std::vector<std::string>&, RemindersHandler completion) override {
    completion(std::vector<Reminder>{});
  }
};

}  // namespace

std::unique_ptr<EventStore> makeLinuxEventStore(std::shared_ptr<HostConsent>) {
  return std::make_unique<RestrictedEventStore>();
}

}  // namespace tavrin::platform
