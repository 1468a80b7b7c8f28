#include "platform/profile/RecurrenceExpander.hpp"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace tavrin::platform {

namespace {

struct Unit {
  UCalendarDateFields field;  // what ICU adds
  std::int64_t multiplier;    // how many of it make one unit
  double averageSeconds;      // the unit's average length, to find the range fast
  double shortestSeconds;     // the unit's shortest length
};

constexpr double day = 86400;

// About three million years either side of 1970. ICU's calendar covers some
// five million; beyond that its arithmetic wraps around instead of failing,
// so occurrences are counted only within this.
constexpr double calendarLimit = 1e14;

Unit unitOf(Recurrence::Frequency frequency) {
  switch (frequency) {
    case Recurrence::Frequency::daily: return {UCAL_DATE, 1, day, day};
    case Recurrence::Frequency::weekly: return {UCAL_DATE, 7, 7 * day, 7 * day};
    case Recurrence::Frequency::monthly: return {UCAL_MONTH, 1, 365.2425 * day / 12, 28 * day};
    case Recurrence::Frequency::yearly: return {UCAL_YEAR, 1, 365.2425 * day, 365 * day};
  }
  return {UCAL_DATE, 1, day, day};
}

}  // namespace

RecurrenceExpander::RecurrenceExpander(const std::string& timeZoneIdentifier)
    : _zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZoneIdentifier))) {}

RecurrenceExpander::~RecurrenceExpander() = default;
RecurrenceExpander::RecurrenceExpander(RecurrenceExpander&&) noexcept = default;
RecurrenceExpander& RecurrenceExpander::operator=(RecurrenceExpander&&) noexcept = default;

bool RecurrenceExpander::knowsTimeZone(const std::string& identifier) {
  const std::unique_ptr<icu::TimeZone> zone(
      icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(identifier)));
  return zone && *zone != icu::TimeZone::getUnknown();
}

double RecurrenceExpander::shortestSpan(const Recurrence& recurrence) {
  return unitOf(recurrence.frequency).shortestSeconds * recurrence.interval - 3600;
}

std::uint64_t RecurrenceExpander::mostOccurrences(const Recurrence& recurrence, double firstStart,
                                                  double duration, double range) {
  // Consecutive starts are a unit of local time apart, and local time runs
  // from UTC-12 to UTC+14: between any two starts, k units less 26 hours.
  constexpr double offsetSpread = 26 * 3600.0;
  const double step = unitOf(recurrence.frequency).shortestSeconds * recurrence.interval;
  double span = range + duration;
  if (recurrence.until) span = std::min(span, *recurrence.until - firstStart);
  double most = std::floor((std::max(span, 0.0) + offsetSpread) / step) + 1;
  if (recurrence.count) most = std::min(most, static_cast<double>(*recurrence.count));
  return static_cast<std::uint64_t>(most);
}

void RecurrenceExpander::expand(double firstStart, double duration, const Recurrence& recurrence,
                                double from, double to,
                                const std::function<void(double start)>& visit) const {
  if (!(from <= to) || from > calendarLimit || !(std::fabs(firstStart) <= calendarLimit)) return;
  const Unit unit = unitOf(recurrence.frequency);
  const std::int64_t step = unit.multiplier * recurrence.interval;
  // ICU adds a 32-bit amount; occurrences beyond it cannot be counted.
  std::int64_t last = std::numeric_limits<std::int32_t>::max() / step;
  if (recurrence.count) last = std::min(last, *recurrence.count - 1);
  const double latestStart =
      std::min({to, recurrence.until.value_or(calendarLimit), calendarLimit});

  UErrorCode status = U_ZERO_ERROR;
  icu::GregorianCalendar calendar(*_zone, status);
  if (U_FAILURE(status)) return;
  // ICU's field arithmetic keeps whole milliseconds; the fraction is carried aside.
  const double wholeMs = std::floor(firstStart * 1000);
  const double fractionMs = firstStart * 1000 - wholeMs;
  const auto startOf = [&](std::int64_t k) -> std::optional<double> {
    UErrorCode error = U_ZERO_ERROR;
    calendar.setTime(wholeMs, error);
    calendar.add(unit.field, static_cast<std::int32_t>(k * step), error);
    const UDate ms = calendar.getTime(error);
    if (U_FAILURE(error)) return {};
    return (ms + fractionMs) / 1000;
  };

  // Begin near the range rather than at the first occurrence. The estimate
  // from the unit's average length is off by less than one occurrence since
  // 1582; before it the Julian calendar drifts from that average, and the
  // walk back makes up for an estimate that lands too late.
  const double estimate = std::floor((from - duration - firstStart) /
                                     (unit.averageSeconds * static_cast<double>(step))) -
                          1;
  std::int64_t k = 0;
  if (estimate > 0)
    k = estimate >= static_cast<double>(last) ? last : static_cast<std::int64_t>(estimate);
  while (k > 0) {
    const auto previous = startOf(k - 1);
    if (!previous || *previous + duration < from) break;
    --k;
  }
  // Starts only grow; one that does not means ICU ran out of calendar.
  double previousStart = -std::numeric_limits<double>::infinity();
  for (; k <= last; ++k) {
    const auto start = startOf(k);
    if (!start || *start > latestStart || *start <= previousStart) break;
    previousStart = *start;
    if (*start + duration >= from) visit(*start);
  }
}

}  // namespace tavrin::platform
