#include "extractors/CalendarEventExtractor.hpp"

#include "dataset/RunStop.hpp"
#include "extractors/CalendarCommon.hpp"

#include <tavrin/error.hpp>

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <cmath>
#include <memory>
#include <optional>

namespace tavrin {

namespace {

// `seconds` moved by `years` calendar years in `zone`; absent when the zone is
// missing or the calendar cannot represent the instant or the result.
std::optional<double> addYears(double seconds, std::int32_t years, const icu::TimeZone* zone) {
  if (zone == nullptr || !std::isfinite(seconds)) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  icu::GregorianCalendar calendar(*zone, icu::Locale::getRoot(), status);
  // Strict while the instant is set, so one outside the calendar's range fails
  // instead of being clamped to its edge; lenient for the addition, so that it
  // carries into larger units instead of failing. A day the target year lacks
  // (29 February) becomes the last day of that month, by the calendar's own rule.
  calendar.setLenient(false);
  calendar.setTime(seconds * 1000.0, status);
  calendar.setLenient(true);
  calendar.add(UCAL_YEAR, years, status);
  const UDate milliseconds = calendar.getTime(status);
  if (U_FAILURE(status) || !std::isfinite(milliseconds)) return std::nullopt;
  return milliseconds / 1000.0;
}

void appendEventRow(Row& row, const platform::Event& event) {
  row.append(event.eventIdentifier);
  row.append(event.calendarItemIdentifier);
  row.append(event.availability);
  row.append(event.startDate);
  row.append(event.endDate);
  row.append(event.isAllDay);
  row.append(event.occurrenceDate);
  row.append(event.isDetached);
  // Only the organizer is described among the participants; without one its
  // values stay null, except the name flag, which is then false.
  const std::optional<platform::Participant>& organizer = event.organizer;
  if (organizer) {
    row.append(organizer->isCurrentUser);
    row.append(ExtractorBase::hasText(organizer->name));
    row.append(organizer->participantRole);
    row.append(organizer->participantStatus);
    row.append(organizer->participantType);
  } else {
    row.append(nullptr);
    row.append(false);
    row.append(nullptr);
    row.append(nullptr);
    row.append(nullptr);
  }
  row.append(event.status);
  appendCalendarItemValues(row, event);
}

}  // namespace

std::pair<double, double> CalendarEventExtractor::predicateDates() {
  platform::Clock& clock = _platform.clock();
  const double now = clock.now();
  const std::string zoneIdentifier = _platform.device().currentTimeZone(now).identifier;
  const std::unique_ptr<icu::TimeZone> zone(
      icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zoneIdentifier)));
  const std::optional<double> start = addYears(now, -2, zone.get());
  // Each end of the range moves its own reading of the clock.
  const std::optional<double> end = addYears(clock.now(), 2, zone.get());
  if (!start || !end) {
    throw TavrinError(ErrorType::processingFailed, std::string(predicateDatesFailure));
  }
  return {*start, *end};
}

Element CalendarEventExtractor::extract() {
  Element element(_dataSourceNameKey);
  platform::EventStore& store = _platform.events();
  if (!grantsCalendarAccess(store, platform::EntityType::event, _dataSourceNameKey, element)) {
    return element;
  }
  const std::vector<std::string> calendars =
      calendarIdentifiers(store, platform::EntityType::event);
  std::pair<double, double> range;
  try {
    range = predicateDates();
  } catch (const TavrinError& error) {
    // The failure stays inside the source as its one entry, described by its
    // kind alone, as a platform's error describes itself.
    element.addError(
        std::string_view(std::string("TavrinError.") + errorTypeName(error.getErrorType())));
    return element;
  }
  Row row;
  for (const platform::Event& event : store.events(range.first, range.second, calendars)) {
    if (runStopping()) break;
    row.clear();
    appendEventRow(row, event);
    element.append(row);
  }
  return element;
}

}  // namespace tavrin
