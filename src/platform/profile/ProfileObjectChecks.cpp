// What a profile must hold beyond each member's own type, checked as each
// object closes.

#include "platform/profile/ProfileJsonReader.hpp"
#include "platform/profile/RecurrenceExpander.hpp"

#include <algorithm>
#include <charconv>

namespace tavrin::platform {

namespace {

// "14.2.1" as {14, 2, 1}; absent unless it is numbers (of up to nine digits)
// joined by single dots. The empty text has no parts.
std::optional<std::vector<int>> parseVersion(std::string_view text) {
  std::vector<int> parts;
  if (text.empty()) return parts;
  for (std::size_t start = 0;;) {
    const auto dot = std::min(text.find('.', start), text.size());
    int part = 0;
    const auto* first = text.data() + start;
    const auto* last = text.data() + dot;
    const auto [end, error] = std::from_chars(first, last, part);
    // Up to nine digits a part: every such number fits an int.
    if (first == last || last - first > 9 || end != last || error != std::errc() || *first == '-') {
      return {};
    }
    parts.push_back(part);
    if (dot == text.size()) return parts;
    start = dot + 1;
  }
}

}  // namespace

void checkProfileObject(ProfileDevice& device, ProfileJsonReader& reader) {
  auto parts = parseVersion(device.systemVersion);
  if (!parts) reader.failAtMember("systemVersion", R"(expected a version such as "14.2")");
  device.systemVersionParts = std::move(*parts);
}

void checkProfileObject(const ProfileContacts& contacts, ProfileJsonReader& reader) {
  if (contacts.groupsError && givenMember<ProfileContacts>(reader, "groups")) {
    reader.failAtMember("groupsError", "give either groups or groupsError, not both");
  }
}

// What a phone's calendar would refuse.
void checkProfileObject(const Recurrence& recurrence, ProfileJsonReader& reader) {
  if (recurrence.interval < 1)
    reader.failAtMember("interval", "expected an interval of at least 1");
  if (recurrence.count && *recurrence.count < 1) {
    reader.failAtMember("count", "expected a count of at least 1");
  }
  if (recurrence.count && recurrence.until) {
    reader.failAtMember("until", "give either count or until, not both");
  }
}

// A recurring event needs both dates, and must end before its next
// occurrence can begin.
void checkProfileObject(const ProfileEvent& event, ProfileJsonReader& reader) {
  if (!event.recurrence) return;
  const auto& e = event.event;
  if (!e.startDate) reader.failAtMember("startDate", "a recurring event needs a start date");
  if (!e.endDate) reader.failAtMember("endDate", "a recurring event needs an end date");
  if (*e.endDate < *e.startDate) {
    reader.failAtMember("endDate", "a recurring event ends before it starts");
  }
  if (*e.endDate - *e.startDate >= RecurrenceExpander::shortestSpan(*event.recurrence)) {
    reader.failAtMember("endDate",
                        "a recurring event must end before its next occurrence can begin");
  }
}

void checkProfileObject(const RandomSetting& random, ProfileJsonReader& reader) {
  if (random.draws.empty()) reader.failAtMember("draws", "expected at least one draw");
}

}  // namespace tavrin::platform
