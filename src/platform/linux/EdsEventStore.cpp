#include "platform/linux/LinuxEventStore.hpp"
#include "platform/linux/StoreConsent.hpp"
#include "platform/linux/edsCalendarItem.hpp"
#include "platform/linux/edsSources.hpp"

#include <tavrin/platform/Platform.hpp>

#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <string_view>

namespace tavrin::platform {
namespace {

// How the backend that serves a calendar counts as a calendar type and as the
// type of its account, in the calendar port's numbers.
struct BackendKind {
  std::string_view backend;
  std::int64_t calendarType;  // local 0, CalDAV 1, Exchange 2, subscription 3, birthday 4
  std::int64_t sourceType;    // local 0, Exchange 1, CalDAV 2, subscribed 4, birthdays 5
};
constexpr BackendKind backendKinds[] = {
    {"caldav", 1, 2}, {"google", 1, 2},   {"ews", 2, 1},   {"exchange", 2, 1},
    {"webcal", 3, 4}, {"contacts", 4, 5}, {"local", 0, 0},
};

BackendKind kindOf(const char* backend) {
  const std::string_view name(backend != nullptr ? backend : "");
  for (const BackendKind& kind : backendKinds) {
    if (kind.backend == name) return kind;
  }
  return {name, 0, 0};
}

const char* extensionOf(std::int64_t entityType) {
  return entityType == EntityType::event ? E_SOURCE_EXTENSION_CALENDAR
                                         : E_SOURCE_EXTENSION_TASK_LIST;
}

// The device's zone, for floating times and whole dates; UTC when libical does not know it.
ICalTimezone* deviceZone() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  icu::UnicodeString id;
  zone->getID(id);
  std::string name;
  id.toUTF8String(name);
  ICalTimezone* builtin = i_cal_timezone_get_builtin_timezone(name.c_str());
  return builtin != nullptr ? builtin : i_cal_timezone_get_utc_timezone();
}

// A calendar or task list opened for reading.
struct OpenCalendar {
  GObjectRef<ESource> source;
  GObjectRef<EClient> client;  // null when it cannot be opened
};

// The calendars and task lists a read finds in the list of sources.
class CalendarDatabase {
 public:
  static std::optional<CalendarDatabase> open(SourceRegistry& list) {
    auto registry = list.get();
    if (std::holds_alternative<PlatformError>(registry)) return std::nullopt;
    return CalendarDatabase(std::get<ESourceRegistry*>(registry));
  }

  // The calendars of an entity type, each opened, in the order of their UIDs.
  std::vector<OpenCalendar> calendars(std::int64_t entityType) const {
    std::vector<OpenCalendar> open;
    const auto type = entityType == EntityType::event ? E_CAL_CLIENT_SOURCE_TYPE_EVENTS
                                                      : E_CAL_CLIENT_SOURCE_TYPE_TASKS;
    for (auto& source : enabledSources(_registry, extensionOf(entityType))) {
      GObjectRef<EClient> client(
          e_cal_client_connect_sync(source.get(), type, edsNoWait, nullptr, nullptr));
      if (client) e_cal_client_set_default_timezone(E_CAL_CLIENT(client.get()), deviceZone());
      open.push_back({std::move(source), std::move(client)});
    }
    return open;
  }

  Calendar describe(const OpenCalendar& calendar, std::int64_t entityType) const {
    ESource* source = calendar.source.get();
    auto* selectable =
        static_cast<ESourceSelectable*>(e_source_get_extension(source, extensionOf(entityType)));
    const BackendKind kind =
        kindOf(e_source_backend_get_backend_name(E_SOURCE_BACKEND(selectable)));
    Calendar result;
    result.calendarIdentifier = e_source_get_uid(source);
    // A colour of iCalendar's sources is "#rrggbb": red, green, blue and an opaque alpha.
    if (const char* color = e_source_selectable_get_color(selectable); color && *color) {
      result.colorComponentCount = 4;
    }
    result.isImmutable = !calendar.client || e_client_is_readonly(calendar.client.get());
    result.type = kind.calendarType;
    if (const char* parentUid = e_source_get_parent(source); parentUid && *parentUid) {
      const GObjectRef<ESource> parent(e_source_registry_ref_source(_registry, parentUid));
      if (parent) {
        const char* title = e_source_get_display_name(parent.get());
        result.source = CalendarSource{parentUid, kind.sourceType, title ? title : ""};
      }
    }
    result.isSubscribed = kind.backend == "webcal";
    // iCalendar tells busy from free time (TRANSP) and nothing else.
    result.supportedEventAvailabilities = entityType == EntityType::event ? 0b11 : 0;
    return result;
  }

  // What reads the items of one calendar: the user's addresses are the mail
  // identities and the address the calendar's account gives the user.
  CalendarItemContext itemContext(const OpenCalendar& calendar) const {
    CalendarItemContext context{E_CAL_CLIENT(calendar.client.get()),
                                e_source_get_uid(calendar.source.get()),
                                deviceZone(),
                                {}};
    GList* identities = e_source_registry_list_sources(_registry, E_SOURCE_EXTENSION_MAIL_IDENTITY);
    for (GList* item = identities; item != nullptr; item = item->next) {
      auto* identity = static_cast<ESourceMailIdentity*>(e_source_get_extension(
          static_cast<ESource*>(item->data), E_SOURCE_EXTENSION_MAIL_IDENTITY));
      addAddress(context, e_source_mail_identity_get_address(identity));
    }
    g_list_free_full(identities, g_object_unref);
    gchar* own = nullptr;
    if (e_client_get_backend_property_sync(calendar.client.get(),
                                           E_CAL_BACKEND_PROPERTY_CAL_EMAIL_ADDRESS, &own, nullptr,
                                           nullptr)) {
      addAddress(context, own);
    }
    g_free(own);
    return context;
  }

 private:
  explicit CalendarDatabase(ESourceRegistry* registry) : _registry(registry) {}

  static void addAddress(CalendarItemContext& context, const char* address) {
    if (address == nullptr || *address == '\0') return;
    std::string lower(address);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    context.me.insert(std::move(lower));
  }

  ESourceRegistry* _registry;
};

bool listed(const std::vector<std::string>& identifiers, const OpenCalendar& calendar) {
  return std::find(identifiers.begin(), identifiers.end(),
                   e_source_get_uid(calendar.source.get())) != identifiers.end();
}

struct Occurrences {
  const CalendarItemContext* context;
  double start, end;  // the range asked for
  std::vector<Event> events;
};

// Keeps an occurrence that overlaps the range: a single event comes whatever
// its time. An event without an end lasts until its start.
gboolean addOccurrence(ICalComponent* component, ICalTime* start, ICalTime* end, gpointer data,
                       GCancellable*, GError**) {
  auto* occurrences = static_cast<Occurrences*>(data);
  Event event = eventFromComponent(component, start, end, *occurrences->context);
  const double first = event.startDate.value_or(occurrences->start);
  const double last = event.endDate.value_or(first);
  if (first <= occurrences->end && last >= occurrences->start) {
    occurrences->events.push_back(std::move(event));
  }
  return stopRequested() ? FALSE : TRUE;
}

bool isOccurrence(ICalComponent* component) {
  return i_cal_component_count_properties(component, I_CAL_RECURRENCEID_PROPERTY) > 0;
}

// The occurrences of a calendar's items within the range. Each series is
// expanded from its main item, which puts its moved occurrences (stored apart,
// with a RECURRENCE-ID) in the place of those they replace; a moved occurrence
// whose series is not in the calendar stands alone.
std::vector<Event> occurrences(const CalendarItemContext& context, double start, double end) {
  Occurrences found{&context, start, end, {}};
  GSList* components = nullptr;
  if (!e_cal_client_get_object_list_sync(context.client, "#t", &components, nullptr, nullptr)) {
    return {};
  }
  std::set<std::string_view> series;
  for (GSList* item = components; item != nullptr; item = item->next) {
    auto* component = static_cast<ICalComponent*>(item->data);
    if (const char* uid = i_cal_component_get_uid(component); uid && !isOccurrence(component)) {
      series.insert(uid);
    }
  }
  for (GSList* item = components; item != nullptr && !stopRequested(); item = item->next) {
    auto* component = static_cast<ICalComponent*>(item->data);
    const char* uid = i_cal_component_get_uid(component);
    if (isOccurrence(component) && uid && series.count(uid) > 0) continue;
    e_cal_client_generate_instances_for_object_sync(
        context.client, component, static_cast<time_t>(std::floor(start)),
        static_cast<time_t>(std::ceil(end)), nullptr, addOccurrence, &found);
  }
  e_util_free_nullable_object_slist(components);
  return std::move(found.events);
}

// Evolution Data Server's calendars (entity type 0) and task lists (1). Every
// read opens them afresh, so it sees the items as they are now.
class EdsEventStore final : public EventStore {
 public:
  explicit EdsEventStore(std::shared_ptr<HostConsent> consent)
      : _calendars("calendars", consent), _reminders("reminders", std::move(consent)) {}

  std::int64_t authorizationStatus(std::int64_t entityType) override {
    const StoreConsent* consent = consentOf(entityType);
    return consent ? consent->status() : AuthorizationStatus::restricted;
  }
  void requestAccess(std::int64_t entityType, AccessHandler handler) override {
    const StoreConsent* consent = consentOf(entityType);
    consent ? consent->request(handler) : handler(false, std::nullopt);
  }

  std::vector<Calendar> calendars(std::int64_t entityType) override {
    std::vector<Calendar> found;
    const auto database = authorized(entityType) ? CalendarDatabase::open(_registry) : std::nullopt;
    if (!database) return found;
    for (const OpenCalendar& calendar : database->calendars(entityType)) {
      found.push_back(database->describe(calendar, entityType));
    }
    return found;
  }

  // Every occurrence that overlaps the range, as libical expands each series
  // in its own zone, calendar by calendar and by start within a calendar.
  std::vector<Event> events(double start, double end,
                            const std::vector<std::string>& calendarIdentifiers) override {
    std::vector<Event> found;
    const auto database =
        authorized(EntityType::event) ? CalendarDatabase::open(_registry) : std::nullopt;
    if (!database || !(start <= end)) return found;
    for (const OpenCalendar& calendar : database->calendars(EntityType::event)) {
      if (!calendar.client || !listed(calendarIdentifiers, calendar) || stopRequested()) continue;
      const CalendarItemContext context = database->itemContext(calendar);
      std::vector<Event> events = occurrences(context, start, end);
      std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) {
        return std::tie(a.startDate, a.calendarItemIdentifier) <
               std::tie(b.startDate, b.calendarItemIdentifier);
      });
      found.insert(found.end(), events.begin(), events.end());
    }
    return found;
  }

  // Every task of the lists, list by list and by UID, on the calling thread;
  // no list when the task lists cannot be read.
  void fetchReminders(const std::vector<std::string>& calendarIdentifiers,
                      RemindersHandler completion) override {
    if (!authorized(EntityType::reminder)) return completion(std::vector<Reminder>{});
    const auto database = CalendarDatabase::open(_registry);
    if (!database) return completion(std::nullopt);
    std::vector<Reminder> found;
    for (const OpenCalendar& list : database->calendars(EntityType::reminder)) {
      if (!listed(calendarIdentifiers, list) || stopRequested()) continue;
      if (!list.client) return completion(std::nullopt);
      const CalendarItemContext context = database->itemContext(list);
      GSList* components = nullptr;
      if (!e_cal_client_get_object_list_sync(context.client, "#t", &components, nullptr, nullptr)) {
        return completion(std::nullopt);
      }
      std::vector<Reminder> reminders;
      for (GSList* item = components; item != nullptr; item = item->next) {
        reminders.push_back(
            reminderFromComponent(static_cast<ICalComponent*>(item->data), context));
      }
      e_util_free_nullable_object_slist(components);
      std::sort(reminders.begin(), reminders.end(), [](const Reminder& a, const Reminder& b) {
        return a.calendarItemIdentifier < b.calendarItemIdentifier;
      });
      found.insert(found.end(), reminders.begin(), reminders.end());
    }
    completion(std::move(found));
  }

 private:
  const StoreConsent* consentOf(std::int64_t entityType) const {
    if (entityType == EntityType::event) return &_calendars;
    if (entityType == EntityType::reminder) return &_reminders;
    return nullptr;
  }
  bool authorized(std::int64_t entityType) const {
    const StoreConsent* consent = consentOf(entityType);
    return consent && consent->status() == AuthorizationStatus::authorized;
  }

  StoreConsent _calendars;
  StoreConsent _reminders;
  SourceRegistry _registry;
};

}  // namespace

std::unique_ptr<EventStore> makeLinuxEventStore(std::shared_ptr<HostConsent> consent) {
  return std::make_unique<EdsEventStore>(std::move(consent));
}

}  // namespace tavrin::platform
