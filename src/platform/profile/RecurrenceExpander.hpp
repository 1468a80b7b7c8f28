#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class TimeZone;
U_NAMESPACE_END

namespace tavrin::platform {

// The occurrences of a recurring event, counted as a phone's calendar counts
// them: occurrence k starts k × interval days, weeks, months or years after
// the first, on the Gregorian calendar of the event's time zone. Each one is
// counted from the first, not from the one before, so a monthly event on the
// 31st falls on the last day of shorter months and returns to the 31st after
// them, and a start at 09:00 stays at 09:00 local time across daylight-saving
// changes. Every occurrence lasts as long as the first. Occurrences are
// counted within 10^14 seconds (about three million years) of 1970.
class RecurrenceExpander {
 public:
  // Expands in the zone with this identifier, which must be one ICU knows.
  explicit RecurrenceExpander(const std::string& timeZoneIdentifier);
  ~RecurrenceExpander();
  RecurrenceExpander(RecurrenceExpander&&) noexcept;
  RecurrenceExpander& operator=(RecurrenceExpander&&) noexcept;

  // Whether ICU knows a time zone by this identifier.
  static bool knowsTimeZone(const std::string& identifier);

  // The shortest time from one occurrence to the next, in seconds: a month of
  // 28 days, a year of 365, and an hour less for a daylight-saving change.
  // An occurrence must end before the next begins, as on a phone.
  static double shortestSpan(const Recurrence& recurrence);

  // The most occurrences of a series starting at `firstStart` and lasting
  // `duration` that one range of `range` seconds can overlap.
  static std::uint64_t mostOccurrences(const Recurrence& recurrence, double firstStart,
                                       double duration, double range);

  // Calls `visit` with the start of every occurrence that overlaps the closed
  // range [from, to], in order. `firstStart` and `duration` are in seconds.
  void expand(double firstStart, double duration, const Recurrence& recurrence, double from,
              double to, const std::function<void(double start)>& visit) const;

 private:
  std::unique_ptr<icu::TimeZone> _zone;
};

}  // namespace tavrin::platform
