#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <optional>
#include <semaphore>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

// The "CalendarReminders" source: one 15-value row per reminder of every
// reminder list. The store delivers the reminders on a thread of its own while
// the extracting thread waits.
class CalendarReminderExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override;

  // The completion of the reminder fetch: appends one row per reminder to
  // `element`, then releases `semaphore`, exactly once on every path. When the
  // fetch delivers no list, `element` gets one error entry, "<name>: " followed
  // by `noListFailure`, instead of rows.
  static void appendReminderRows(const std::optional<std::vector<platform::Reminder>>& reminders,
                                 std::counting_semaphore<>& semaphore,
                                 const CalendarReminderExtractor& extractor, Element& element);

  static constexpr std::string_view noListFailure = "Reminder fetch delivered no list";
};

}  // namespace tavrin
