#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <string>
#include <string_view>
#include <utility>

namespace tavrin {

// The "CalendarEvents" source: one 23-value row per event, and per occurrence
// of a recurring event, from two calendar years before the moment of collection
// to two calendar years after it.
class CalendarEventExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override;

  // Start and end of the query range, in seconds since 1970: the clock's
  // reading moved two years back, and a second reading moved two years ahead,
  // with the Gregorian calendar of the platform's current time zone. Throws
  // TavrinError (processingFailed, `predicateDatesFailure`) when either cannot be
  // computed.
  std::pair<double, double> predicateDates();

  static constexpr std::string_view predicateDatesFailure =
      "CalendarEvents: Cann't create predicate dates";
};

}  // namespace tavrin
