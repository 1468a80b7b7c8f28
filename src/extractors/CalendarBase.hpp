#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/Row.hpp"

#include <cstdint>
#include <vector>

namespace tavrin {

// A source that describes the calendars of the phone's calendar database.
class CalendarBase : public ExtractorBase {
 public:
  // One row per calendar of the entity type (see platform::EntityType), in the
  // order the store gives them.
  virtual std::vector<Row> collectCalendarRows(std::int64_t entityType) = 0;
};

}  // namespace tavrin
