#pragma once

#include "dataset/ExtractorBase.hpp"

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
class CalendarReminderExtractor : public ExtractorBase {
 public:
  CalendarReminderExtractor(std::string dataSourceNameKey, platform::Platform& platform)
      : _dataSourceNameKey(std::move(dataSourceNameKey)), _platform(platform) {}

  const std::string& dataSourceNameKey() const override { return _dataSourceNameKey; }
  Element extract() override;

  // The completion of the reminder fetch: appends one row per reminder to
  // `element`, then releases `semaphore`, exactly once on every path. When the
  // fetch delivers no list, `element` gets one error entry, "<name>: " followed
  // by `noListFailure`, instead of rows.
  static void appendReminderRows(const std::optional<std::vector<platform::Reminder>>& reminders,
                                 std::counting_semaphore<>& semaphore,
                                 const CalendarReminderExtractor& extractor, Element& element);

  static constexpr std::string_view noListFailure = "Reminder fetch delivered no list";

 private:
  std::string _dataSourceNameKey;
  platform::Platform& _platform;
};

}  // namespace tavrin
