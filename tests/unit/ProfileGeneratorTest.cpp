// Generated phones: the same bytes for the same seed, the sizes asked for as
// a collection sees them, a phone's proportions and edge cases, and markers
// in place of every personal text.

#include "generator/DeviceProfileWriter.hpp"
#include "generator/ProfileGenerator.hpp"

#include "collection/DataExtractorManager.hpp"
#include "dataset/JsonWriter.hpp"
#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace tavrin::tool {
namespace {

using namespace platform;

std::string profileText(const GeneratorOptions& options) {
  std::ostringstream text;
  writeDeviceProfile(ProfileGenerator(options).generate(), text);
  return text.str();
}

// Rows per section of the dataset a collection of the phone gives.
std::map<std::string, std::size_t> sectionSizes(const DeviceProfile& profile) {
  DataExtractorManager manager(std::make_shared<ProfilePlatform>(profile));
  std::map<std::string, std::size_t> sizes;
  for (const auto& section : nlohmann::json::parse(writeJson(manager.extractData()).view())) {
    sizes[section.begin().key()] = section.begin().value().size();
  }
  return sizes;
}

GeneratorOptions sized(std::size_t contacts, std::size_t groups, std::size_t calendars,
                       std::size_t events, std::size_t reminders, std::size_t assets,
                       std::size_t albums, std::size_t devices) {
  GeneratorOptions o;
  o.contacts = contacts, o.groups = groups, o.calendars = calendars, o.events = events;
  o.reminders = reminders, o.assets = assets, o.albums = albums, o.devices = devices;
  return o;
}

TEST(ProfileGenerator, OneSeedGivesOnePhone) {
  auto options = presetOptions(Preset::small);
  options.seed = 42;
  const auto text = profileText(options);
  EXPECT_EQ(profileText(options), text);
  options.seed = 43;
  EXPECT_NE(profileText(options), text);
}

TEST(ProfileGenerator, SectionsDoNotDependOnEachOthersSizes) {
  const auto options = sized(30, 2, 2, 40, 10, 100, 6, 3);
  auto more = options;
  more.contacts = 60;
  more.events = 10;
  const auto a = ProfileGenerator(options).generate(), b = ProfileGenerator(more).generate();
  EXPECT_TRUE(std::equal(a.photos.assets.begin(), a.photos.assets.end(), b.photos.assets.begin(),
                         b.photos.assets.end(), [](const auto& x, const auto& y) {
                           return x.localIdentifier == y.localIdentifier;
                         }));
  EXPECT_EQ(a.contacts.list[29].identifier, b.contacts.list[29].identifier);
  EXPECT_EQ((*a.reminders)[9].reminder.calendarItemIdentifier,
            (*b.reminders)[9].reminder.calendarItemIdentifier);
}

class GeneratedSizes : public testing::TestWithParam<GeneratorOptions> {};

TEST_P(GeneratedSizes, LoadAndCollectAsAskedFor) {
  const auto& options = GetParam();
  const auto profile = readDeviceProfile(profileText(options), "generated.json");
  EXPECT_EQ(profile.contacts.list.size(), options.contacts);
  EXPECT_EQ(profile.contacts.groups.size(), options.groups);
  EXPECT_EQ(profile.reminders->size(), options.reminders);

  auto sizes = sectionSizes(profile);
  // Every occurrence of a recurring event is one row, and all fall inside
  // the window the collection reads.
  EXPECT_EQ(sizes["CalendarEvents"], options.events);
  EXPECT_EQ(sizes["CalendarReminders"], options.reminders);
  EXPECT_EQ(sizes["Images"] + sizes["Video"] + sizes["UnknownFiles"], options.assets);
  EXPECT_EQ(sizes["MediaAlbums"], options.albums);
  EXPECT_EQ(sizes["CaptureDevice"], options.devices);
  // Events need a calendar to be in, so one is made when none was asked for.
  EXPECT_EQ(sizes["Calendars"], std::max(options.calendars, std::size_t{options.events > 0}));
}

INSTANTIATE_TEST_SUITE_P(Sizes, GeneratedSizes,
                         testing::Values(presetOptions(Preset::small),
                                         sized(0, 0, 0, 0, 0, 0, 0, 0),
                                         sized(1, 1, 0, 1, 1, 1, 1, 1),
                                         sized(7, 0, 0, 500, 3, 0, 5, 11),
                                         sized(0, 4, 9, 2, 0, 40, 0, 0)));

// Members of the written phone that hold nothing personal, by JSON pointer;
// every other text is the user's own.
const std::regex impersonal(
    "/(device|captureDevices)/.*|.*/(identifier|calendarIdentifier|calendarItemIdentifier|"
    "eventIdentifier|sourceIdentifier|localIdentifier|assetIdentifiers/[0-9]+|timeZone|"
    "recurrence/frequency)");

TEST(ProfileGenerator, MarkersTakeThePlaceOfEveryPersonalText) {
  auto options = presetOptions(Preset::small);
  options.contacts = 400, options.events = 300, options.reminders = 200;
  const auto before = nlohmann::json::parse(profileText(options)).flatten();
  options.markers = true;
  const auto after = nlohmann::json::parse(profileText(options)).flatten();

  ASSERT_EQ(before.size(), after.size());  // the same phone, texts aside
  std::set<std::string> markers;
  std::map<std::string, std::string> labelMarkers;
  std::size_t replaced = 0;
  for (auto b = before.begin(), a = after.begin(); b != before.end(); ++b, ++a) {
    ASSERT_EQ(a.key(), b.key());
    SCOPED_TRACE(b.key() + ": " + b->dump());
    if (!b->is_string() || std::regex_match(b.key(), impersonal)) {
      EXPECT_EQ(*a, *b);
      continue;
    }
    const auto &original = b->get_ref<const std::string&>(),
               &text = a->get_ref<const std::string&>();
    if (b.key().ends_with("/label") && original.find("_$!<") != std::string::npos) {
      EXPECT_EQ(text, original);  // the phone's own labels are not personal
    } else if (b.key().ends_with("/label")) {
      ASSERT_EQ(text.rfind("PII-label-", 0), 0U);
      // One marker per distinct label, so labels still repeat.
      const auto [entry, added] = labelMarkers.try_emplace(original, text);
      EXPECT_EQ(entry->second, text);
      EXPECT_TRUE(!added || markers.insert(text).second) << "marker used twice";
    } else if (original.empty() ||
               original.find_first_not_of(" \t\xC2\xA0\xE2\x80\x83\xE3\x80") == std::string::npos) {
      EXPECT_EQ(text, original);  // nothing personal in an empty or blank text
    } else {
      ASSERT_EQ(text.rfind("PII-", 0), 0U);
      EXPECT_TRUE(markers.insert(text).second) << "marker used twice";
      ++replaced;
    }
  }
  EXPECT_GT(replaced, 1000U);
}

TEST(ProfileGenerator, HasAPhonesProportionsAndEdgeCases) {
  auto options = sized(3000, 20, 8, 3000, 500, 20000, 300, 8);
  const auto p = ProfileGenerator(options).generate();
  const auto some = [](const auto& list, auto predicate) {
    return std::any_of(list.begin(), list.end(), predicate);
  };
  const auto share = [&](auto predicate) {
    return static_cast<double>(
               std::count_if(p.photos.assets.begin(), p.photos.assets.end(), predicate)) /
           20000;
  };
  const auto ofType = [](std::int64_t type) {
    return [type](const Asset& a) { return a.mediaType == type; };
  };
  EXPECT_NEAR(share(ofType(MediaType::image)), 0.86, 0.02);
  EXPECT_NEAR(share(ofType(MediaType::video)), 0.10, 0.02);
  EXPECT_TRUE(some(p.photos.assets, ofType(MediaType::unknown)) &&
              some(p.photos.assets, ofType(MediaType::audio)));
  EXPECT_NEAR(share([](const Asset& a) { return !a.location; }), 1.0 / 3, 0.02);

  std::size_t predefined = 0, custom = 0, absent = 0, nonAscii = 0, blank = 0, lineBreak = 0;
  for (const auto& c : p.contacts.list) {
    for (const auto& v : c.phoneNumbers) {
      ++(!v.label ? absent : v.label->find("_$!<") == 0 ? predefined : custom);
    }
    nonAscii += some(c.givenName, [](char ch) { return static_cast<unsigned char>(ch) >= 0x80; });
    for (const auto* text : {&c.givenName, &c.familyName, &c.middleName, &c.nickname, &c.note}) {
      blank += !text->empty() && text->find_first_not_of(" \t") == std::string::npos;
      lineBreak += *text == "\n";
    }
  }
  EXPECT_GT(predefined, 5 * custom);
  EXPECT_GT(custom, 2 * absent);
  EXPECT_GT(absent, 0U);
  EXPECT_GT(nonAscii, 300U);
  EXPECT_GT(blank, 0U);
  EXPECT_GT(lineBreak, 0U);

  EXPECT_TRUE(some(p.events, [](const auto& e) { return e.recurrence.has_value(); }));
  EXPECT_TRUE(some(p.events, [](const auto& e) { return !e.event.timeZone; }));
  EXPECT_TRUE(some(p.events, [](const auto& e) { return e.event.isAllDay; }));
  // An organizer without a name, so also events with an organizer.
  EXPECT_TRUE(
      some(p.events, [](const auto& e) { return e.event.organizer && !e.event.organizer->name; }));
  // Recurrences make fewer events than rows.
  EXPECT_LT(p.events.size(), options.events);
  EXPECT_TRUE(some(*p.captureDevices, [](const auto& d) {
    return d->mediaTypes == std::vector<std::string>{"soun"};
  }));
}

}  // namespace
}  // namespace tavrin::tool
