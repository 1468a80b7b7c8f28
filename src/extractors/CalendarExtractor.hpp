#pragma once

#include "extractors/CalendarBase.hpp"

#include <tavrin/platform/Platform.hpp>

#include <string>
#include <vector>

namespace tavrin {

// The "Calendars" source: one 9-value row per calendar that can hold events.
class CalendarExtractor : public CalendarBase {
 public:
  explicit CalendarExtractor(platform::Platform& platform) : _platform(platform) {}

  // Always "Calendars"; the source names its element itself.
  const std::string& dataSourceNameKey() const override;
  Element extract() override;
  std::vector<Row> collectCalendarRows(std::int64_t entityType) override;

  // The name in the access-denied entry, which differs from the element's name.
  static constexpr std::string_view accessDeniedText = "CalendarsEvent";

 private:
  platform::Platform& _platform;
};

}  // namespace tavrin
