#include "extractors/ContactExtractor.hpp"

#include "SectionJson.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using nlohmann::json;

// Places in the contact row, counted from 0.
constexpr std::size_t identifier = 0, birthday = 1, contactType = 3;
constexpr std::size_t givenName = 4, phoneticOrganizationName = 14, note = 19;
constexpr std::size_t socialProfiles = 20, phoneNumbers = 21, urlAddresses = 22,
                      postalAddresses = 23, emailAddresses = 24, contactRelations = 25;

json extractContacts(platform::Platform& phone) {
  return sectionValues(ContactExtractor(phone).extract());
}
json extractContacts(const std::string& profile) {
  return extractContacts(*loadTestProfile(profile));
}

// The label codes (place 2 of every entry) of the given lists of a row.
json labelCodes(const json& row, std::initializer_list<std::size_t> lists) {
  json codes = json::array();
  for (const std::size_t list : lists) {
    codes.push_back(json::array());
    for (const json& entry : row.at(list)) codes.back().push_back(entry.at(1));
  }
  return codes;
}

// The profile's first contact fills no field; the i-th after it (from 1) fills
// only the field at place 3 + i, in row order from the given name to the note.
TEST(ContactExtractor, FlagsOnlyTheFilledField) {
  const json section = extractContacts("contacts-one-field-each.json");
  ASSERT_EQ(section.size(), 17u);
  EXPECT_EQ(section.at(0).at(birthday), nullptr);
  EXPECT_EQ(section.at(0).at(contactType), 0);
  for (std::size_t i = 0; i < section.size(); ++i) {
    for (std::size_t position = givenName; position <= note; ++position) {
      EXPECT_EQ(section.at(i).at(position), i > 0 && position == givenName + i - 1)
          << section.at(i).at(identifier) << " at position " << position + 1;
    }
  }
}

// Spaces and tabs of any kind are no text; a line break is. The profile's first
// six contacts hold only blanks in their name and phone number.
TEST(ContactExtractor, FlagsOnlyTextsThatAreNotBlank) {
  const json section = extractContacts("contacts-whitespace-texts.json");
  ASSERT_EQ(section.size(), 9u);
  for (std::size_t i = 0; i < section.size(); ++i) {
    EXPECT_EQ(section.at(i).at(givenName), i >= 6) << section.at(i).at(identifier);
    EXPECT_EQ(section.at(i).at(phoneNumbers).at(0).at(2), i >= 6) << section.at(i).at(identifier);
  }
}

// A phone whose address book changes between extractions: it answers from
// whichever loaded profile is current.
class ChangingPlatform : public platform::Platform {
 public:
  explicit ChangingPlatform(std::shared_ptr<platform::Platform> first)
      : current(std::move(first)) {}
  platform::DeviceInfo& device() override { return current->device(); }
  platform::ContactStore& contacts() override { return current->contacts(); }
  platform::EventStore& events() override { return current->events(); }
  platform::PhotoLibrary& photos() override { return current->photos(); }
  platform::CaptureDeviceSource& captureDevices() override { return current->captureDevices(); }
  platform::LocationServices& location() override { return current->location(); }
  platform::Clock& clock() override { return current->clock(); }
  platform::RandomSource& random() override { return current->random(); }

  std::shared_ptr<platform::Platform> current;
};

// A host's own platform may resolve a birthday to NaN or an infinity, which
// a profile cannot say but one made in memory can: no instant, so the place is
// null, and the dataset stays writable.
TEST(ContactExtractor, BirthdaysThatAreNotFiniteAreAbsent) {
  const double infinity = std::numeric_limits<double>::infinity();
  platform::DeviceProfile profile;
  profile.permissions[static_cast<std::size_t>(platform::Permission::contacts)].status = 3;
  profile.contacts.list.resize(2);
  profile.contacts.list[0].birthday = std::numeric_limits<double>::quiet_NaN();
  profile.contacts.list[0].nonGregorianBirthday = infinity;
  profile.contacts.list[1].birthday = -infinity;
  profile.contacts.list[1].nonGregorianBirthday = -0.5;
  platform::ProfilePlatform phone(profile);
  const json section = extractContacts(phone);
  EXPECT_EQ(json({section.at(0).at(birthday), section.at(0).at(birthday + 1),
                  section.at(1).at(birthday), section.at(1).at(birthday + 1)}),
            json({nullptr, nullptr, nullptr, -0.5}));
}

TEST(ContactExtractor, NumbersCustomLabelsOnceAcrossListsContactsAndExtractions) {
  const auto first = loadTestProfile("contacts-shared-labels.json");
  ChangingPlatform phone(first);
  ContactExtractor extractor(phone);

  const json section = sectionValues(extractor.extract());
  ASSERT_EQ(section.size(), 2u);
  // New labels are numbered in row order: phones, URLs, postal addresses,
  // e-mail addresses, relations. Social and messaging labels take no number.
  EXPECT_EQ(labelCodes(section.at(0), {phoneNumbers, urlAddresses, postalAddresses, emailAddresses,
                                       contactRelations}),
            json::parse("[[1, 2], [3], [4, 2], [5, 1], [6]]"));
  EXPECT_EQ(labelCodes(section.at(1), {phoneNumbers, emailAddresses, contactRelations}),
            json::parse("[[3], [1], [7]]"));

  // Labels keep their numbers in a later extraction; new ones continue the count.
  phone.current = loadTestProfile("contacts-shared-labels-later.json");
  EXPECT_EQ(labelCodes(sectionValues(extractor.extract()).at(0),
                       {phoneNumbers, postalAddresses, emailAddresses}),
            json::parse("[[8], [1], [2]]"));

  phone.current = first;
  EXPECT_EQ(sectionValues(extractor.extract()), section);
}

TEST(ContactExtractor, WritesPredefinedLabelsAndNumbersTheOthersOncePerCanonicalForm) {
  // A predefined label is "_$!<" followed later on the same line by ">!$_";
  // each of the seven line terminators ends a line.
  EXPECT_EQ(labelCodes(extractContacts("contacts-predefined-labels.json").at(0), {phoneNumbers}),
            json::parse(R"([["_$!<Mobile>!$_", 0, 1, 2, "my _$!<Main>!$_ line", 3, 4, 5, 6, 7, 8,
                              9, 10, "_$!<\n_$!<Fax>!$_", "_$!<>!$_", 11, "_$!<Mobile>!$_"]])"));
  // Composed and decomposed forms are one label; compatibility forms (the
  // "fi" ligature) are not.
  EXPECT_EQ(labelCodes(extractContacts("contacts-equivalent-labels.json").at(0),
                       {phoneNumbers, emailAddresses}),
            json::parse("[[1, 1, 2, 3, 3, 3, 4, 5, 6, 6], [1]]"));
}

TEST(ContactExtractor, WritesNullForAbsentListsAndOneRowPerEntry) {
  const json section = extractContacts("contacts-lists.json");
  ASSERT_EQ(section.size(), 2u);
  for (const json& row : section) ASSERT_EQ(row.size(), 27u);  // before the rows are sliced
  const json& bare = section.at(0);
  EXPECT_EQ(json(bare.begin() + socialProfiles, bare.end()),
            json::parse("[null, null, null, null, null, null, null]"));

  // From the birthdays to the contact type, then the seven lists from the social profiles on.
  // Countries are written as entered; the other address texts become flags. An empty label is
  // still a label, and an empty service is still digested.
  const json& row = section.at(1);
  EXPECT_EQ(json(row.begin() + birthday, row.begin() + givenName),
            json::parse("[645148800.25, -86400.5, 1]"));
  EXPECT_EQ(json(row.begin() + socialProfiles, row.end()), json::parse(R"([
      [["social-unlabelled", null, "d41d8cd98f00b204e9800998ecf8427e", true, false, false],
       ["social-labelled", "0cc175b9c0f1b6a831c399e269772661", "900150983cd24fb0d6963f7d28e17f72",
        false, true, false]],
      [["phone", "_$!<Mobile>!$_", true]],
      [["url", 0, false]],
      [["postal", "_$!<Home>!$_", true, false, true, false, " Deutschland ", "de", false, true],
       ["postal-empty", 0, false, false, false, false, "", "", false, false]],
      [["email", "_$!<Work>!$_", true]],
      [["relation", "_$!<Mother>!$_", true]],
      [["im", "d41d8cd98f00b204e9800998ecf8427e", "900150983cd24fb0d6963f7d28e17f72", false]]])"));
}

struct SystemCase {
  const char* profile;
  bool phoneticOrganizationName;  // position 15, from 10.0 on
  bool postalSubAreas;            // postal positions 9 and 10, from 10.3 on
  bool note;                      // position 20, before 13.0 only
};

class VersionGate : public ::testing::TestWithParam<SystemCase> {};

TEST_P(VersionGate, LeavesOutWhatTheSystemDoesNotOffer) {
  const SystemCase& system = GetParam();
  const auto platform = loadTestProfile(system.profile);
  ContactExtractor extractor(*platform);
  const json row = sectionValues(extractor.extract()).at(0);
  const auto flag = [](bool offered) { return offered ? json(true) : json(nullptr); };
  const json& postal = row.at(postalAddresses).at(0);
  EXPECT_EQ(json({row.at(phoneticOrganizationName), row.at(note), postal.at(8), postal.at(9)}),
            json({flag(system.phoneticOrganizationName), flag(system.note),
                  flag(system.postalSubAreas), flag(system.postalSubAreas)}));

  // What is read is also what is asked for; the note is asked for again at
  // every extraction on the systems that offer it.
  const std::vector<std::string> keys = platform->lastKeysToFetch();
  const auto asked = [&keys](const char* key) { return std::count(keys.begin(), keys.end(), key); };
  EXPECT_EQ((std::vector{asked("phoneticOrganizationName"), asked("subAdministrativeArea"),
                         asked("subLocality"), asked("note")}),
            (std::vector<std::ptrdiff_t>{system.phoneticOrganizationName, system.postalSubAreas,
                                         system.postalSubAreas, system.note}));
  EXPECT_EQ(keys.size(),
            41u + system.phoneticOrganizationName + 2u * system.postalSubAreas + system.note);
  EXPECT_EQ(sectionValues(extractor.extract()).at(0), row);
  EXPECT_EQ(platform->lastKeysToFetch().size(), keys.size() + system.note);
}

INSTANTIATE_TEST_SUITE_P(
    Systems, VersionGate,
    ::testing::Values(SystemCase{"contacts-system-9.3.json", false, false, true},
                      SystemCase{"contacts-system-10.2.json", true, false, true},
                      SystemCase{"contacts-system-10.3.json", true, true, true},
                      SystemCase{"contacts-system-13.0.json", true, true, false}));

TEST(ContactExtractor, KeepsTheRowsBeforeAnEnumerationFailure) {
  const json section = extractContacts("contacts-fail-after-two.json");
  ASSERT_EQ(section.size(), 3u);
  EXPECT_EQ(
      json({section.at(0).at(identifier), section.at(1).at(identifier), section.at(2)}),
      json({"first", "second", "EXTRACTING ERROR : The address book is being synchronized."}));
}

TEST(ContactExtractor, AnEmptyAddressBookGivesNoRowsAndARefusedOneIsNotRead) {
  EXPECT_EQ(extractContacts("address-book-empty.json"), json::array());
  for (const char* profile : {"address-book-denied.json", "address-book-restricted.json"}) {
    const auto platform = loadTestProfile(profile);
    EXPECT_EQ(sectionValues(ContactExtractor(*platform).extract()),
              json({"EXTRACTING ERROR : Access denied Contacts"}))
        << profile;
    EXPECT_TRUE(platform->lastKeysToFetch().empty()) << profile;
  }
}

}  // namespace
}  // namespace tavrin
