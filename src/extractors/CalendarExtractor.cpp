#include "extractors/CalendarExtractor.hpp"

#include "extractors/CalendarCommon.hpp"

namespace tavrin {

Element CalendarExtractor::extract() {
  Element element(_dataSourceNameKey);
  if (!grantsCalendarAccess(_platform.events(), platform::EntityType::event, accessDeniedText,
                            element)) {
    return element;
  }
  for (const Row& row : collectCalendarRows(platform::EntityType::event)) element.append(row);
  return element;
}

std::vector<Row> CalendarExtractor::collectCalendarRows(std::int64_t entityType) {
  std::vector<Row> rows;
  for (const platform::Calendar& calendar : _platform.events().calendars(entityType)) {
    Row& row = rows.emplace_back();
    row.append(calendar.calendarIdentifier);
    row.append(calendar.colorComponentCount);
    row.append(calendar.isImmutable);
    row.append(calendar.type);
    if (const auto& source = calendar.source) {
      row.append(source->sourceIdentifier);
      row.append(source->sourceType);
      row.append(hasText(std::string_view(source->title)));
    } else {
      row.append(nullptr);
      row.append(nullptr);
      row.append(false);
    }
    row.append(calendar.isSubscribed);
    row.append(calendar.supportedEventAvailabilities);
  }
  return rows;
}

}  // namespace tavrin
