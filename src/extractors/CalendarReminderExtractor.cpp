#include "extractors/CalendarReminderExtractor.hpp"

#include "dataset/PendingAnswer.hpp"
#include "extractors/CalendarCommon.hpp"

namespace tavrin {

void CalendarReminderExtractor::appendReminderRows(
    const std::optional<std::vector<platform::Reminder>>& reminders, Element& element) const {
  if (!reminders) {
    // A fetch that fails delivers no list; unlike an empty one it is recorded,
    // so that "no reminders" and "reminders unreadable" stay apart.
    std::string description = _dataSourceNameKey;
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
  // The completion only hands the list over; the rows are made here, after
  // the wait. A run that stops meanwhile leaves the section as it is.
  using Fetched = std::optional<std::vector<platform::Reminder>>;
  const PendingAnswer<Fetched> fetched;
  store.fetchReminders(calendarIdentifiers(store, platform::EntityType::reminder),
                       [fetched](Fetched reminders) { fetched.deliver(std::move(reminders)); });
  if (const auto reminders = fetched.wait()) appendReminderRows(*reminders, element);
  return element;
}

}  // namespace tavrin
