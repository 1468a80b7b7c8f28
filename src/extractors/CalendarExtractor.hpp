#pragma once

#include "dataset/PlatformExtractor.hpp"
#include "extractors/CalendarBase.hpp"

#include <tavrin/platform/Platform.hpp>

#include <string>
#include <vector>

namespace tavrin {

// The "Calendars" source: one 9-value row per calendar that can hold events.
class CalendarExtractor : public PlatformExtractor<CalendarBase> {
 public:
  // The source names itself "Calendars".
  explicit CalendarExtractor(platform::Platform& platform)
      : PlatformExtractor("Calendars", platform) {}

  Element extract() override;
  std::vector<Row> collectCalendarRows(std::int64_t entityType) override;

  // The name in the access-denied entry, which differs from the element's name.
  static constexpr std::string_view accessDeniedText = "CalendarsEvent";
};

}  // namespace tavrin
