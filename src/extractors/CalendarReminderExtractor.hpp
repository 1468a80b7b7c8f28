#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

// The "CalendarReminders" source: one 15-value row per reminder of every
// reminder list. The store delivers the reminders on a thread of its own while
// the extracting thread waits, until the run stops.
class CalendarReminderExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override;

  static constexpr std::string_view noListFailure = "Reminder fetch delivered no list";

 private:
  // The rows of what the reminder fetch delivered: one row per reminder, or,
  // when the fetch delivered no list, one error entry, "<name>: " followed by
  // `noListFailure`.
  void appendReminderRows(const std::optional<std::vector<platform::Reminder>>& reminders,
                          Element& element) const;
};

}  // namespace tavrin
