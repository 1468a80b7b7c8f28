#include "extractors/CalendarReminderExtractor.hpp"

#include "extractors/CalendarCommon.hpp"

#include <memory>

namespace tavrin {

void CalendarReminderExtractor::appendReminderRows(
    const std::optional<std::vector<platform::Reminder>>& reminders,
    std::counting_semaphore<>& semaphore, const CalendarReminderExtractor& extractor,
    Element& element) {
  // The waiting extraction resumes when this guard goes, after the last append,
  // whichever way the function is left.
  const auto release = [](std::counting_semaphore<>* waiting) { waiting->release(); };
  const std::unique_ptr<std::counting_semaphore<>, decltype(release)> guard(&semaphore, release);

  if (!reminders) {
    // A fetch that fails delivers no list; unlike an empty one it is recorded,
    // so that "no reminders" and "reminders unreadable" stay apart.
    std::string description = extractor.dataSourceNameKey();
    description.append(": ").append(noListFailure);
    element.addError(std::string_view(description));
    return;
  }
  Row row;
  for (const platform::Reminder& reminder : *reminders) {
    row.clear();
    row.append(reminder.calendarItemIdentifier);
    row.append(reminder.startDate);
    row.append(reminder.dueDate);
    row.append(reminder.isCompleted);
    row.append(reminder.completionDate);
    row.append(reminder.priority);
    appendCalendarItemValues(row, reminder);
    element.append(row);
  }
}

Element CalendarReminderExtractor::extract() {
  Element element(_dataSourceNameKey);
  platform::EventStore& store = _platform.events();
  if (!grantsCalendarAccess(store, platform::EntityType::reminder, _dataSourceNameKey, element)) {
    return element;
  }
  // The completion shares the semaphore, so it stays alive until release()
  // has returned on the store's thread even though this thread may have woken
  // and left by then. The element is touched by the completion only before the
  // release, and here only after the wait.
  const auto semaphore = std::make_shared<std::counting_semaphore<>>(0);
  store.fetchReminders(calendarIdentifiers(store, platform::EntityType::reminder),
                       [this, semaphore, &element](auto reminders) {
                         appendReminderRows(reminders, *semaphore, *this, element);
                       });
  semaphore->acquire();
  return element;
}

}  // namespace tavrin
