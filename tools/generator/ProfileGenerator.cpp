#include "ProfileGenerator.hpp"

#include "SampleTexts.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrin::tool {

using namespace platform;
namespace s = samples;

namespace {

constexpr double minute = 60, hour = 3600, day = 86400, year = 365.25 * day;

// Each section draws from its own stream.
enum Stream : std::uint64_t {
  deviceStream = 1,
  contactStream,
  groupStream,
  calendarStream,
  eventStream,
  reminderStream,
  assetStream,
  collectionStream,
  captureStream,
};

template <typename T, std::size_t N>
const T& pick(GeneratorRandom& random, const T (&items)[N]) {
  return random.pick(std::span<const T>(items));
}

template <std::size_t N>
std::size_t weighted(GeneratorRandom& random, const double (&weights)[N]) {
  return random.weighted(std::span<const double>(weights));
}

bool isBlank(std::string_view text) {
  return std::find(std::begin(s::blanks), std::end(s::blanks), text) != std::end(s::blanks);
}

// The country a phone is set up in: its locale, time zone and carrier.
struct Region {
  s::Text language, region, currency, symbol, identifier, collator, script;
  bool metric;
  s::Text timeZone, abbreviation;
  s::Text carrier, carrierCountry, mcc, mnc;
  Coordinate home;
};

constexpr Region regions[] = {
    {"de",
     "DE",
     "EUR",
     "€",
     "de_DE",
     "de-DE",
     "",
     true,
     "Europe/Berlin",
     "CEST",
     "Telekom.de",
     "de",
     "262",
     "01",
     {52.52, 13.405}},
    {"en",
     "US",
     "USD",
     "$",
     "en_US",
     "en-US",
     "",
     false,
     "America/New_York",
     "EDT",
     "Verizon",
     "us",
     "311",
     "480",
     {40.7128, -74.006}},
    {"ja",
     "JP",
     "JPY",
     "¥",
     "ja_JP",
     "ja-JP",
     "Jpan",
     true,
     "Asia/Tokyo",
     "JST",
     "docomo",
     "jp",
     "440",
     "10",
     {35.6812, 139.7671}},
    {"ru",
     "RU",
     "RUB",
     "₽",
     "ru_RU",
     "ru-RU",
     "Cyrl",
     true,
     "Europe/Moscow",
     "MSK",
     "MTS",
     "ru",
     "250",
     "01",
     {55.7558, 37.6173}},
    {"pt",
     "BR",
     "BRL",
     "R$",
     "pt_BR",
     "pt-BR",
     "",
     true,
     "America/Sao_Paulo",
     "BRT",
     "Vivo",
     "br",
     "724",
     "06",
     {-23.5505, -46.6333}},
};

// Places the photos were taken: home most of the time, and a few trips.
constexpr Coordinate travelPlaces[] = {{48.8566, 2.3522},    {38.7223, -9.1393},
                                       {41.9028, 12.4964},   {-33.8688, 151.2093},
                                       {37.8651, -119.5383}, {64.1466, -21.9426}};

std::optional<std::string> optionalText(s::Text text) {
  if (text.empty()) return std::nullopt;
  return std::string(text);
}

Uuid uuidBytes(GeneratorRandom& random) {
  Uuid bytes{};
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random.below(256));
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // variant 1
  return bytes;
}

// A date with a fraction, as the phone stores it.
double withFraction(GeneratorRandom& random, double seconds) {
  return std::floor(seconds) + std::round(random.unit() * 1000) / 1000;
}

}  // namespace

GeneratorOptions presetOptions(Preset preset) {
  GeneratorOptions options;
  switch (preset) {
    case Preset::small:
      options.contacts = 40, options.groups = 3, options.calendars = 2, options.events = 60;
      options.reminders = 15, options.assets = 250, options.albums = 8, options.devices = 3;
      break;
    case Preset::typical:
      options.contacts = 600, options.groups = 10, options.calendars = 6, options.events = 2500;
      options.reminders = 300, options.assets = 8000, options.albums = 120, options.devices = 5;
      break;
    case Preset::large:
      options.contacts = 20000, options.groups = 200, options.calendars = 30;
      options.events = 30000, options.reminders = 5000, options.assets = 100000;
      options.albums = 2000, options.devices = 8;
      break;
  }
  return options;
}

std::optional<Preset> presetNamed(std::string_view name) {
  if (name == "small") return Preset::small;
  if (name == "typical") return Preset::typical;
  if (name == "large") return Preset::large;
  return std::nullopt;
}

ProfileGenerator::ProfileGenerator(const GeneratorOptions& options) : _options(options) {}

DeviceProfile ProfileGenerator::generate() {
  _markerCount = 0;
  _labelMarkers.clear();
  DeviceProfile profile;
  device(profile);
  contacts(profile);
  calendars(profile);
  events(profile);
  reminders(profile);
  assets(profile);
  collections(profile);
  captureDevices(profile);
  return profile;
}

std::string ProfileGenerator::personal(std::string_view kind, std::string_view text) {
  if (!_options.markers || text.empty() || isBlank(text)) return std::string(text);
  return std::string(markerPrefix) + std::string(kind) + '-' + std::to_string(++_markerCount);
}

template <std::size_t N>
std::string ProfileGenerator::maybeText(GeneratorRandom& random, std::string_view kind, double p,
                                        const std::string_view (&pool)[N]) {
  if (!random.chance(p)) return {};
  if (random.chance(0.015)) return std::string(pick(random, s::blanks));
  if (random.chance(0.003)) return personal(kind, s::lineBreak);
  return personal(kind, pick(random, pool));
}

template <std::size_t N>
std::optional<std::string> ProfileGenerator::label(GeneratorRandom& random,
                                                   const std::string_view (&predefined)[N],
                                                   double customShare, double absentShare) {
  const double draw = random.unit();
  if (draw < absentShare) return std::nullopt;
  if (draw >= absentShare + customShare) return std::string(pick(random, predefined));
  const std::string custom(pick(random, s::customLabels));
  if (!_options.markers) return custom;
  auto [entry, added] = _labelMarkers.try_emplace(custom);
  if (added) {
    entry->second = std::string(markerPrefix) + "label-" + std::to_string(_labelMarkers.size());
  }
  return entry->second;
}

void ProfileGenerator::device(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, deviceStream);
  static constexpr s::Text machines[] = {"iPhone15,2", "iPhone14,5", "iPhone12,1", "iPhone16,1"};
  static constexpr s::Text versions[] = {"17.4.1", "16.6", "15.8", "17.0"};
  const auto& region = pick(random, regions);
  auto& d = profile.device;
  d.model = d.localizedModel = "iPhone";
  d.systemName = "iOS";
  d.systemVersion = pick(random, versions);
  for (std::size_t start = 0;;) {
    const auto dot = std::min(d.systemVersion.find('.', start), d.systemVersion.size());
    d.systemVersionParts.push_back(std::stoi(d.systemVersion.substr(start, dot - start)));
    if (dot == d.systemVersion.size()) break;
    start = dot + 1;
  }
  d.identifierForVendor = uuidBytes(random);
  const auto machine = pick(random, machines);
  std::copy(machine.begin(), machine.end(), d.machine.begin());
  d.isGeneratingDeviceOrientationNotifications = true;
  d.isMultitaskingSupported = true;
  d.isBatteryMonitoringEnabled = random.chance(0.3);
  const std::int64_t gigabyte = 1'000'000'000;
  const std::int64_t size = std::int64_t{64} << random.below(4);
  d.fileSystem = FileSystemSizes{size * gigabyte, random.between(1, size - 1) * gigabyte};
  d.physicalMemory = std::uint64_t{4} << (30 + random.below(2));
  d.locale.languageCode = optionalText(region.language);
  d.locale.regionCode = optionalText(region.region);
  d.locale.currencyCode = optionalText(region.currency);
  d.locale.currencySymbol = optionalText(region.symbol);
  d.locale.identifier = region.identifier;
  d.locale.collatorIdentifier = optionalText(region.collator);
  d.locale.scriptCode = optionalText(region.script);
  d.locale.usesMetricSystem = region.metric;
  d.timeZone = {std::string(region.timeZone), optionalText(region.abbreviation)};
  d.carrier = Carrier{true, optionalText(region.carrier), optionalText(region.carrierCountry),
                      optionalText(region.mcc), optionalText(region.mnc)};
  d.radioAccessTechnology = "CTRadioAccessTechnologyNR";
  d.libraryBundleStrings["SDKIdentifier"] = "tavrin-generated";

  for (auto& permission : profile.permissions) permission.status = AuthorizationStatus::authorized;
  profile.location = {true, true, true, true};
  profile.clock = ClockSetting{generatedClockStart, 0.001};
  profile.random = RandomSetting{{static_cast<std::uint32_t>(_options.seed % 180)}};
}

void ProfileGenerator::contacts(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, contactStream);
  profile.contacts.list.reserve(_options.contacts);
  for (std::size_t i = 0; i < _options.contacts; ++i) {
    profile.contacts.list.push_back(contact(random));
  }
  GeneratorRandom groups(_options.seed, groupStream);
  for (std::size_t i = 0; i < _options.groups; ++i) {
    ContactGroup group;
    group.identifier = groups.uuid() + ":ABGroup";
    group.name = maybeText(groups, "groupName", 0.96, s::groupNames);
    profile.contacts.groups.push_back(std::move(group));
  }
}

Contact ProfileGenerator::contact(GeneratorRandom& random) {
  // A birthday resolves to midnight of its day.
  const auto birthday = [&]() -> double {
    return static_cast<double>(random.between(-10957, 14610)) * day;  // 1940 to 2010
  };
  Contact c;
  c.identifier = random.uuid() + ":ABPerson";
  if (random.chance(0.22)) c.birthday = birthday();
  if (random.chance(0.01)) c.nonGregorianBirthday = birthday();
  const bool organization = random.chance(0.05);
  c.contactType = organization ? 1 : 0;
  c.givenName = maybeText(random, "givenName", organization ? 0.02 : 0.93, s::givenNames);
  c.middleName = maybeText(random, "middleName", 0.06, s::middleNames);
  c.familyName = maybeText(random, "familyName", organization ? 0.01 : 0.78, s::familyNames);
  c.previousFamilyName = maybeText(random, "previousFamilyName", 0.02, s::familyNames);
  c.nameSuffix = maybeText(random, "nameSuffix", 0.02, s::nameSuffixes);
  c.namePrefix = maybeText(random, "namePrefix", 0.03, s::namePrefixes);
  c.nickname = maybeText(random, "nickname", 0.08, s::nicknames);
  c.phoneticGivenName = maybeText(random, "phoneticGivenName", 0.04, s::phoneticGivenNames);
  c.phoneticMiddleName = maybeText(random, "phoneticMiddleName", 0.005, s::middleNames);
  c.phoneticFamilyName = maybeText(random, "phoneticFamilyName", 0.04, s::phoneticFamilyNames);
  c.phoneticOrganizationName =
      maybeText(random, "phoneticOrganizationName", 0.01, s::organizations);
  c.organizationName =
      maybeText(random, "organizationName", organization ? 0.98 : 0.22, s::organizations);
  c.departmentName = maybeText(random, "departmentName", 0.06, s::departments);
  c.jobTitle = maybeText(random, "jobTitle", 0.14, s::jobTitles);
  c.note = maybeText(random, "note", 0.09, s::notes);
  c.imageDataAvailable = random.chance(0.3);

  const auto handle = [&] {
    static constexpr s::Text users[] = {"anna", "j.garcia", "ivan.petrov", "sakura_s",
                                        "info", "kontakt",  "m.dubois"};
    std::string user(pick(random, users));
    return user + random.digits(2);
  };
  static constexpr double socialCounts[] = {0.97, 0.025, 0.005};
  for (auto n = weighted(random, socialCounts); n > 0; --n) {
    LabeledValue<SocialProfile> entry{
        random.uuid(), label(random, s::addressLabels, 0.05, 0.7), {}};
    const auto user = handle();
    auto& v = entry.value;
    if (random.chance(0.7)) v.urlString = personal("socialUrl", "https://social.example/" + user);
    if (random.chance(0.9)) v.username = personal("socialUsername", user);
    if (random.chance(0.5)) v.userIdentifier = personal("socialUserIdentifier", random.digits(9));
    v.service = personal("socialService", pick(random, s::socialServices));
    c.socialProfiles.push_back(std::move(entry));
  }

  static constexpr double phoneCounts[] = {0.08, 0.55, 0.27, 0.07, 0.03};
  for (auto n = weighted(random, phoneCounts); n > 0; --n) {
    static constexpr s::Text formats[] = {"+49 151 ", "(555) ", "+81 90-", "0", "+7 916 "};
    // Parts drawn one statement at a time: the operands of + have no order.
    std::string number(pick(random, formats));
    number += random.digits(3) + ' ';
    number += random.digits(4);
    if (random.chance(0.005)) number = pick(random, s::blanks);
    c.phoneNumbers.push_back({random.uuid(), label(random, s::phoneLabels, 0.12, 0.03),
                              personal("phoneNumber", number)});
  }

  if (random.chance(0.05)) {
    auto identifier = random.uuid();
    auto urlLabel = label(random, s::urlLabels, 0.1, 0.1);
    std::string url = "https://" + std::string(pick(random, s::mailDomains)) + "/~";
    url += handle();
    c.urlAddresses.push_back({std::move(identifier), std::move(urlLabel), personal("url", url)});
  }

  static constexpr double postalCounts[] = {0.84, 0.14, 0.02};
  for (auto n = weighted(random, postalCounts); n > 0; --n) {
    LabeledValue<PostalAddress> entry{
        random.uuid(), label(random, s::addressLabels, 0.06, 0.03), {}};
    auto& a = entry.value;
    a.street = maybeText(random, "street", 0.9, s::streets);
    a.city = maybeText(random, "city", 0.95, s::cities);
    a.state = maybeText(random, "state", 0.4, s::states);
    if (random.chance(0.85)) a.postalCode = personal("postalCode", random.digits(5));
    const auto& country = pick(random, s::countries);
    a.country = personal("country", country[0]);
    a.isoCountryCode = personal("isoCountryCode", country[1]);
    a.subAdministrativeArea =
        maybeText(random, "subAdministrativeArea", 0.05, s::subAdministrativeAreas);
    a.subLocality = maybeText(random, "subLocality", 0.1, s::subLocalities);
    c.postalAddresses.push_back(std::move(entry));
  }

  static constexpr double emailCounts[] = {0.5, 0.38, 0.1, 0.02};
  for (auto n = weighted(random, emailCounts); n > 0; --n) {
    auto identifier = random.uuid();
    auto emailLabel = label(random, s::addressLabels, 0.06, 0.03);
    std::string email = handle() + '@';
    email += pick(random, s::mailDomains);
    c.emailAddresses.push_back(
        {std::move(identifier), std::move(emailLabel), personal("email", email)});
  }

  static constexpr double relationCounts[] = {0.97, 0.02, 0.01};
  for (auto n = weighted(random, relationCounts); n > 0; --n) {
    std::string name = std::string(pick(random, s::givenNames)) + ' ';
    name += pick(random, s::familyNames);
    c.contactRelations.push_back({random.uuid(), label(random, s::relationLabels, 0.1, 0.02),
                                  personal("relationName", name)});
  }

  if (random.chance(0.02)) {
    LabeledValue<InstantMessageAddress> entry{
        random.uuid(), label(random, s::addressLabels, 0.05, 0.3), {}};
    entry.value.username = personal("messageUsername", handle());
    entry.value.service = personal("messageService", pick(random, s::messageServices));
    c.instantMessageAddresses.push_back(std::move(entry));
  }
  return c;
}

void ProfileGenerator::calendars(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, calendarStream);
  // Kinds of calendar: raw calendar type, source type, source title pool
  // index, whether subscribed and read-only, and the availabilities offered.
  struct Kind {
    std::int64_t type, sourceType;
    bool subscribed, immutable;
    std::uint64_t availabilities;
  };
  static constexpr Kind kinds[] = {
      {1, 2, false, false, 3},   // CalDAV (iCloud, Google)
      {0, 0, false, false, 0},   // on the phone only
      {2, 1, false, false, 15},  // Exchange
      {3, 4, true, true, 0},     // subscribed
      {4, 5, false, true, 0},    // birthdays
  };
  static constexpr double kindWeights[] = {0.5, 0.15, 0.15, 0.15, 0.05};
  const auto make = [&](const Kind& kind) {
    Calendar c;
    c.calendarIdentifier = random.uuid();
    if (!random.chance(0.03)) c.colorComponentCount = random.chance(0.95) ? 4 : 2;
    c.isImmutable = kind.immutable;
    c.type = kind.type;
    if (!random.chance(0.03)) {
      c.source = CalendarSource{random.uuid(), kind.sourceType,
                                maybeText(random, "sourceTitle", 0.95, s::sourceTitles)};
    }
    c.isSubscribed = kind.subscribed;
    c.supportedEventAvailabilities = kind.availabilities;
    return c;
  };
  // Every event and reminder needs a calendar to be in.
  const auto eventCalendars = std::max(_options.calendars, std::size_t{_options.events > 0});
  const auto reminderLists =
      std::max((_options.calendars + 1) / 2, std::size_t{_options.reminders > 0});
  for (std::size_t i = 0; i < eventCalendars; ++i) {
    profile.calendars.events.push_back(
        make(i == 0 ? kinds[0] : kinds[weighted(random, kindWeights)]));
  }
  for (std::size_t i = 0; i < reminderLists; ++i) {
    profile.calendars.reminders.push_back(make(kinds[random.chance(0.8) ? 0 : 1]));
  }
}

void ProfileGenerator::events(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, eventStream);
  const std::string& deviceZone = profile.device.timeZone.identifier;
  static constexpr s::Text otherZones[] = {"America/New_York", "Asia/Tokyo", "UTC",
                                           "Europe/London"};
  // A collection asks for two calendar years either side of its clock; two
  // days less on each side keeps every occurrence inside whatever the leap
  // years and the zone.
  const double windowStart = generatedClockStart - 728 * day;
  const double windowEnd = generatedClockStart + 728 * day;
  const double firstDay = std::ceil(windowStart / day) * day;  // a midnight, UTC
  const auto windowDays = static_cast<std::uint64_t>((windowEnd - firstDay) / day);

  struct Repeat {
    Recurrence::Frequency frequency;
    double longestUnit;  // the longest the unit can be, in seconds
    std::int64_t mostOccurrences;
  };
  static constexpr Repeat repeats[] = {
      {Recurrence::Frequency::daily, day, 30},
      {Recurrence::Frequency::weekly, 7 * day, 104},
      {Recurrence::Frequency::monthly, 31 * day, 48},
      {Recurrence::Frequency::yearly, 366 * day, 4},
  };
  static constexpr double repeatWeights[] = {0.1, 0.55, 0.25, 0.1};
  static constexpr double durations[] = {15 * minute, 30 * minute, 45 * minute, hour,
                                         1.5 * hour,  2 * hour,    3 * hour};

  std::size_t remaining = _options.events;
  while (remaining > 0) {
    ProfileEvent p;
    auto& e = p.event;
    p.calendarIdentifier =
        random.pick(std::span<const Calendar>(profile.calendars.events)).calendarIdentifier;
    e.calendarItemIdentifier = random.uuid();
    if (!random.chance(0.01)) e.eventIdentifier = p.calendarIdentifier + ':' + random.uuid();
    static constexpr std::int64_t availabilities[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 2, -1};
    e.availability = pick(random, availabilities);

    e.isAllDay = random.chance(0.12);
    const double dayStart = firstDay + static_cast<double>(random.below(windowDays - 1)) * day;
    double start, length;
    if (e.isAllDay) {
      start = dayStart;
      length = static_cast<double>(1 + (random.chance(0.1) ? random.below(3) : 0)) * day - 1;
    } else {
      start = dayStart +
              static_cast<double>(random.between(std::int64_t{7} * 4, std::int64_t{20} * 4)) * 15 *
                  minute;
      length = pick(random, durations);
    }

    // Recurring: as many occurrences as fit the window, the budget and the
    // kind of repetition; a single event when fewer than two would.
    if (remaining >= 2 && random.chance(0.2)) {
      const auto& repeat = repeats[weighted(random, repeatWeights)];
      const std::int32_t interval = random.chance(0.8) ? 1 : 2;
      const double step = repeat.longestUnit * interval;
      const auto fit = static_cast<std::int64_t>((windowEnd - hour - length - start) / step) + 1;
      const auto most =
          std::min({fit, repeat.mostOccurrences, static_cast<std::int64_t>(remaining)});
      // A daily event must end within the day; all-day ones repeat weekly at most.
      const bool fitsFrequency = !(e.isAllDay && repeat.frequency == Recurrence::Frequency::daily);
      if (most >= 2 && fitsFrequency) {
        Recurrence r;
        r.frequency = repeat.frequency;
        r.interval = interval;
        const auto count = random.between(2, most);
        const bool exactUnit = repeat.frequency == Recurrence::Frequency::daily ||
                               repeat.frequency == Recurrence::Frequency::weekly;
        if (exactUnit && random.chance(0.3)) {
          // Days and weeks are exact up to a daylight-saving hour, so this
          // "until" admits exactly `count` occurrences.
          r.until = start + static_cast<double>(count - 1) * step + 2 * hour;
        } else {
          r.count = count;
        }
        p.recurrence = r;
        remaining -= static_cast<std::size_t>(count);
      }
    }
    if (!p.recurrence) --remaining;

    e.startDate = start;
    e.endDate = start + length;
    e.occurrenceDate = start;
    e.isDetached = !p.recurrence && random.chance(0.01);
    if (random.chance(0.3)) {
      Participant organizer;
      organizer.isCurrentUser = random.chance(0.4);
      const double nameDraw = random.unit();
      if (nameDraw < 0.9) {
        organizer.name = personal("organizerName", pick(random, s::organizerNames));
      } else if (nameDraw < 0.95) {
        organizer.name = std::string(pick(random, s::blanks));
      }
      static constexpr std::int64_t roles[] = {1, 1, 1, 1, 1, 1, 0, 0, 2, 3};
      static constexpr std::int64_t statuses[] = {0, 1, 2, 2, 2, 2, 3, 4};
      static constexpr std::int64_t types[] = {1, 1, 1, 1, 1, 1, 0, 2, 3, 4};
      organizer.participantRole = pick(random, roles);
      organizer.participantStatus = pick(random, statuses);
      organizer.participantType = pick(random, types);
      e.organizer = organizer;
      e.attendeeCount = random.between(0, 15);
      static constexpr std::int64_t eventStatuses[] = {1, 1, 1, 2, 3};
      e.status = pick(random, eventStatuses);
    } else if (random.chance(0.1)) {
      e.attendeeCount = 0;
    }
    e.hasAttendees = e.attendeeCount.value_or(0) > 0;
    e.hasNotes = random.chance(0.15);
    e.hasAlarms = random.chance(0.6);
    const double locationDraw = random.unit();
    if (locationDraw < 0.3) {
      e.location = personal("eventLocation", pick(random, s::eventLocations));
    } else if (locationDraw < 0.33) {
      e.location = std::string();
    } else if (locationDraw < 0.35) {
      e.location = std::string(pick(random, s::blanks));
    }
    if (!random.chance(0.03)) {
      const double daysBefore = static_cast<double>(random.below(90)) + random.unit();
      e.creationDate = withFraction(random, start - daysBefore * day);
      if (!random.chance(0.05)) e.lastModifiedDate = *e.creationDate + random.unit() * 30 * day;
    }
    const double zoneDraw = random.unit();
    if (e.isAllDay ? zoneDraw < 0.1 : zoneDraw < 0.8) {
      e.timeZone = deviceZone;
    } else if (!e.isAllDay && zoneDraw < 0.9) {
      e.timeZone = std::string(pick(random, otherZones));
    }  // otherwise floating
    profile.events.push_back(std::move(p));
  }
}

void ProfileGenerator::reminders(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, reminderStream);
  auto& list = profile.reminders.emplace();
  list.reserve(_options.reminders);
  const auto aroundNow = [&](double spread) {
    return withFraction(random, generatedClockStart + (random.unit() * 2 - 1) * spread);
  };
  for (std::size_t i = 0; i < _options.reminders; ++i) {
    ProfileReminder p;
    auto& r = p.reminder;
    p.calendarIdentifier =
        random.pick(std::span<const Calendar>(profile.calendars.reminders)).calendarIdentifier;
    r.calendarItemIdentifier = random.uuid();
    if (random.chance(0.2)) r.startDate = aroundNow(year);
    if (random.chance(0.55)) r.dueDate = aroundNow(year);
    r.isCompleted = random.chance(0.45);
    if (r.isCompleted && random.chance(0.95)) r.completionDate = aroundNow(year);
    static constexpr std::int64_t priorities[] = {0, 0, 0, 0, 1, 5, 9};
    r.priority = pick(random, priorities);
    r.hasNotes = random.chance(0.1);
    r.hasAttendees = random.chance(0.01);
    r.hasAlarms = random.chance(0.3);
    r.hasRecurrenceRules = random.chance(0.08);
    if (random.chance(0.03))
      r.location = personal("reminderLocation", pick(random, s::eventLocations));
    if (!random.chance(0.02)) {
      r.creationDate = aroundNow(2 * year);
      if (!random.chance(0.03)) r.lastModifiedDate = *r.creationDate + random.unit() * 30 * day;
    }
    if (r.dueDate && random.chance(0.7)) r.timeZone = profile.device.timeZone.identifier;
    if (r.hasAttendees) {
      r.attendeeCount = random.between(1, 4);
    } else if (random.chance(0.05)) {
      r.attendeeCount = 0;
    }
    list.push_back(std::move(p));
  }
}

void ProfileGenerator::assets(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, assetStream);
  const Coordinate home = [&] {
    for (const auto& region : regions) {
      if (region.timeZone == profile.device.timeZone.identifier) return region.home;
    }
    return regions[0].home;
  }();
  // Mostly photos, some videos, a few assets of unknown type and audio.
  static constexpr std::int64_t mediaTypes[] = {MediaType::image, MediaType::video,
                                                MediaType::unknown, MediaType::audio};
  static constexpr double mediaWeights[] = {0.86, 0.10, 0.025, 0.015};
  static constexpr std::uint64_t imageSubtypes[] = {0, 8, 4, 2, 1, 16};
  static constexpr double imageSubtypeWeights[] = {0.6, 0.25, 0.08, 0.04, 0.01, 0.02};
  static constexpr std::uint64_t videoSubtypes[] = {0, 1 << 17, 1 << 18, 1 << 16};
  static constexpr double videoSubtypeWeights[] = {0.8, 0.1, 0.05, 0.05};
  static constexpr std::array<std::int64_t, 2> photoSizes[] = {
      {4032, 3024}, {3024, 4032}, {4284, 5712}, {1536, 2048}, {1179, 2556}};
  static constexpr std::array<std::int64_t, 2> videoSizes[] = {
      {1920, 1080}, {3840, 2160}, {1080, 1920}, {1280, 720}};
  static constexpr std::uint64_t sourceTypes[] = {1, 2, 4};
  static constexpr double sourceWeights[] = {0.93, 0.04, 0.03};

  profile.photos.assets.reserve(_options.assets);
  for (std::size_t i = 0; i < _options.assets; ++i) {
    Asset a;
    a.localIdentifier = random.uuid() + "/L0/001";
    a.mediaType = mediaTypes[weighted(random, mediaWeights)];
    a.sourceType = sourceTypes[weighted(random, sourceWeights)];
    if (a.mediaType == MediaType::image) {
      a.mediaSubtypes = imageSubtypes[weighted(random, imageSubtypeWeights)];
      const auto& size = pick(random, photoSizes);
      a.pixelWidth = size[0], a.pixelHeight = size[1];
    } else if (a.mediaType == MediaType::video) {
      a.mediaSubtypes = videoSubtypes[weighted(random, videoSubtypeWeights)];
      const auto& size = pick(random, videoSizes);
      a.pixelWidth = size[0], a.pixelHeight = size[1];
      a.duration = withFraction(random, static_cast<double>(random.between(1, 600)));
    } else if (a.mediaType == MediaType::audio) {
      a.duration = withFraction(random, static_cast<double>(random.between(20, 400)));
    }
    if (!random.chance(0.015)) {
      a.creationDate = withFraction(random, generatedClockStart - random.unit() * 8 * year);
      if (!random.chance(0.02)) {
        // Most edits soon after the photo is taken, a few years later.
        const double edit = random.unit();
        a.modificationDate = *a.creationDate + edit * random.unit() * year;
      }
    }
    // A third of the library carries no position.
    if (random.chance(2.0 / 3)) {
      const Coordinate& place = random.chance(0.8) ? home : pick(random, travelPlaces);
      a.location = Coordinate{place.latitude + (random.unit() - 0.5) * 0.4,
                              place.longitude + (random.unit() - 0.5) * 0.4};
    }
    a.isFavorite = random.chance(0.05);
    a.isHidden = random.chance(0.01);
    profile.photos.assets.push_back(std::move(a));
  }
}

void ProfileGenerator::collections(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, collectionStream);
  const auto assetCount = profile.photos.assets.size();
  // `count` assets in a row from a random start: an album's members.
  const auto members = [&](std::size_t count) {
    IdentifierList ids;
    if (assetCount == 0) return ids;
    count = std::min(count, assetCount);
    const auto first = static_cast<std::size_t>(random.below(assetCount));
    for (std::size_t k = 0; k < count; ++k) {
      ids.append(profile.photos.assets[(first + k) % assetCount].localIdentifier);
    }
    return ids;
  };
  static constexpr double typeWeights[] = {0.55, 0.15, 0.30};
  std::vector<std::int64_t> types(_options.albums);
  for (auto& type : types) type = static_cast<std::int64_t>(weighted(random, typeWeights)) + 1;
  // Moments split the library between them, in order.
  const auto moments = static_cast<std::size_t>(std::count(types.begin(), types.end(), 3));
  std::size_t moment = 0;

  static constexpr std::int64_t albumSubtypes[] = {2, 2, 2, 2, 2, 2, 100, 101, 3, 5, 6};
  static constexpr std::int64_t smartSubtypes[] = {200, 201, 202, 203, 204, 205, 206, 207, 208,
                                                   209, 210, 211, 212, 213, 214, 215, 217};
  for (const auto type : types) {
    ProfileCollection p;
    auto& c = p.collection;
    c.localIdentifier = random.uuid() + "/L0/040";
    c.assetCollectionType = type;
    if (type == 1) {
      c.assetCollectionSubtype = pick(random, albumSubtypes);
      p.assetIdentifiers = members(
          static_cast<std::size_t>(random.chance(0.1) ? random.below(1000) : random.below(80)));
      if (random.chance(0.3)) {
        c.startDate = withFraction(random, generatedClockStart - random.unit() * 8 * year);
        c.endDate = *c.startDate + random.unit() * year;
      }
    } else if (type == 2) {
      c.assetCollectionSubtype = pick(random, smartSubtypes);
      p.assetIdentifiers = members(static_cast<std::size_t>(random.below(2000)));
    } else {
      const auto first = moment * assetCount / moments, last = (moment + 1) * assetCount / moments;
      ++moment;
      for (auto k = first; k < last; ++k) {
        p.assetIdentifiers.append(profile.photos.assets[k].localIdentifier);
      }
      c.startDate = withFraction(random, generatedClockStart - random.unit() * 8 * year);
      c.endDate = *c.startDate + random.unit() * 3 * day;
      if (random.chance(0.6)) {
        const auto& place = pick(random, travelPlaces);
        c.approximateLocation =
            Coordinate{place.latitude + random.unit() - 0.5, place.longitude + random.unit() - 0.5};
        static constexpr double nameCounts[] = {0.3, 0.45, 0.2, 0.05};
        for (auto n = weighted(random, nameCounts); n > 0; --n) {
          c.localizedLocationNames.push_back(personal("placeName", pick(random, s::placeNames)));
        }
      }
    }
    profile.photos.collections.push_back(std::move(p));
  }
}

void ProfileGenerator::captureDevices(DeviceProfile& profile) {
  GeneratorRandom random(_options.seed, captureStream);
  struct Template {
    s::Text deviceType, localizedName;
    std::int64_t position, constituents;
    float aperture;
    bool depth, flash;
    std::int32_t width, height;
    double maxZoom;
  };
  // In the order a phone lists them; a microphone has no camera properties.
  static constexpr Template templates[] = {
      {"AVCaptureDeviceTypeBuiltInWideAngleCamera", "Back Camera", 1, 0, 1.75f, false, true, 4032,
       3024, 16},
      {"AVCaptureDeviceTypeBuiltInWideAngleCamera", "Front Camera", 2, 0, 2.25f, false, false, 3088,
       2320, 8},
      {"AVCaptureDeviceTypeBuiltInMicrophone", "iPhone Microphone", 0, 0, 0, false, false, 0, 0, 1},
      {"AVCaptureDeviceTypeBuiltInUltraWideCamera", "Back Ultra Wide Camera", 1, 0, 2.25f, false,
       true, 4032, 3024, 8},
      {"AVCaptureDeviceTypeBuiltInTrueDepthCamera", "Front TrueDepth Camera", 2, 0, 2.25f, true,
       false, 3088, 2320, 8},
      {"AVCaptureDeviceTypeBuiltInDualWideCamera", "Back Dual Wide Camera", 1, 2, 1.5f, true, true,
       4032, 3024, 95.625},
      {"AVCaptureDeviceTypeBuiltInTripleCamera", "Back Triple Camera", 1, 3, 1.75f, true, true,
       4032, 3024, 123.75},
      {"AVCaptureDeviceTypeBuiltInTelephotoCamera", "Back Telephoto Camera", 1, 0, 2.75f, false,
       true, 4032, 3024, 16},
  };
  auto& list = profile.captureDevices.emplace();
  for (std::size_t i = 0; i < _options.devices; ++i) {
    const auto& t = templates[i % std::size(templates)];
    CaptureDevice d;
    d.deviceType = t.deviceType;
    d.localizedName = t.localizedName;
    if (i >= std::size(templates))
      d.localizedName += ' ' + std::to_string(i / std::size(templates) + 1);
    d.isConnected = true;
    d.isVirtualDevice = t.constituents > 0;
    d.constituentDeviceCount = t.constituents;
    d.lensAperture = t.aperture;
    d.position = t.position;
    const bool camera = t.width > 0;
    if (camera) {
      d.mediaTypes = {"vide"};
      if (t.depth) d.mediaTypes.emplace_back("dpth");
      d.maxAvailableVideoZoomFactor = t.maxZoom;
      d.isFlashAvailable = d.hasFlash = d.hasTorch = d.isTorchAvailable = t.flash;
      d.isFlashActive = t.flash && random.chance(0.05);
      d.supportedFocusModes =
          t.position == 1 ? std::vector<std::int64_t>{0, 1, 2} : std::vector<std::int64_t>{0};
      d.isFocusPointOfInterestSupported = d.isSmoothAutoFocusSupported =
          d.isAutoFocusRangeRestrictionSupported = t.position == 1;
      d.isAdjustingFocus = t.position == 1 && random.chance(0.1);
      d.maxWhiteBalanceGain = 4;
      if (t.depth) {
        d.activeDepthDataFormat = DepthDataFormat{false, false, true, true, 2, false, false};
      }
      d.activeFormat = {t.width, t.height, {1, 30, 1, 0}, 0, 0x76696465, 0x34323066};  // vide, 420f
    } else {
      d.mediaTypes = {"soun"};
      d.activeFormat = {0, 0, {}, 0, 0x736F756E, 0x6C70636D};  // soun, lpcm
    }
    list.emplace_back(std::move(d));
  }
}

}  // namespace tavrin::tool
