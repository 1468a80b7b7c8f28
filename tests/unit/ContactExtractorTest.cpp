#include "extractors/ContactExtractor.hpp"

#include "ProfileSections.hpp"
#include "extractors/ContactGroupExtractor.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using nlohmann::json;
using test::loadTestProfile;
using test::sectionJson;

// Places in the contact row, counted from 0.
enum Position : std::size_t {
  identifier = 0,
  birthday = 1,
  nonGregorianBirthday = 2,
  contactType = 3,
  givenName = 4,
  phoneticOrganizationName = 14,
  jobTitle = 17,
  imageDataAvailable = 18,
  note = 19,
  socialProfiles = 20,
  phoneNumbers = 21,
  urlAddresses = 22,
  postalAddresses = 23,
  emailAddresses = 24,
  contactRelations = 25,
  instantMessageAddresses = 26,
};

constexpr const char* md5OfEmpty = "d41d8cd98f00b204e9800998ecf8427e";
constexpr const char* md5OfAbc = "900150983cd24fb0d6963f7d28e17f72";

json extractContacts(const std::string& profile) {
  const auto platform = loadTestProfile(profile);
  ContactExtractor extractor(*platform);
  return sectionJson(extractor.extract());
}

// The row of the contact with `id`; fails the test when there is none.
json contactRow(const json& section, const std::string& id) {
  for (const json& row : section) {
    if (row.is_array() && row.at(identifier) == id) return row;
  }
  ADD_FAILURE() << "no row for contact " << id;
  return json::array();
}

// Position 2 of every entry of a list: the label codes.
json labelCodes(const json& list) {
  json codes = json::array();
  for (const json& entry : list) codes.push_back(entry.at(1));
  return codes;
}

TEST(ContactExtractor, AnEmptyAddressBookGivesAnEmptySection) {
  EXPECT_EQ(extractContacts("address-book-empty.json"), json::array());
}

// Each contact of the profile fills exactly one field, named by its identifier;
// only that field's position may be set.
struct FieldCase {
  const char* field;
  std::size_t position;
};

class ContactFieldPosition : public ::testing::TestWithParam<FieldCase> {};

TEST_P(ContactFieldPosition, OnlyTheFilledFieldIsFlagged) {
  const json section = extractContacts("contacts-one-field-each.json");
  const json row = contactRow(section, GetParam().field);
  ASSERT_EQ(row.size(), 27u);
  for (std::size_t position = givenName; position <= note; ++position) {
    EXPECT_EQ(row.at(position), position == GetParam().position) << "position " << position + 1;
  }
  EXPECT_EQ(row.at(birthday), nullptr);
  EXPECT_EQ(row.at(contactType), 0);
  for (std::size_t position = socialProfiles; position <= instantMessageAddresses; ++position) {
    EXPECT_EQ(row.at(position), nullptr) << "position " << position + 1;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ContactFieldPosition,
    ::testing::Values(FieldCase{"bare", 0}, FieldCase{"givenName", 4}, FieldCase{"middleName", 5},
                      FieldCase{"familyName", 6}, FieldCase{"previousFamilyName", 7},
                      FieldCase{"nameSuffix", 8}, FieldCase{"namePrefix", 9},
                      FieldCase{"nickname", 10}, FieldCase{"phoneticGivenName", 11},
                      FieldCase{"phoneticMiddleName", 12}, FieldCase{"phoneticFamilyName", 13},
                      FieldCase{"phoneticOrganizationName", 14}, FieldCase{"organizationName", 15},
                      FieldCase{"departmentName", 16}, FieldCase{"jobTitle", 17},
                      FieldCase{"imageDataAvailable", 18}, FieldCase{"note", 19}),
    [](const auto& testCase) { return std::string(testCase.param.field); });

struct WhitespaceCase {
  const char* contact;
  bool filled;
};

class PresenceFlag : public ::testing::TestWithParam<WhitespaceCase> {};

TEST_P(PresenceFlag, TrimsSpacesAndTabsButNotLineBreaks) {
  const json row =
      contactRow(extractContacts("contacts-whitespace-texts.json"), GetParam().contact);
  EXPECT_EQ(row.at(givenName), GetParam().filled) << GetParam().contact;
  EXPECT_EQ(row.at(phoneNumbers).at(0).at(2), GetParam().filled) << GetParam().contact;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PresenceFlag,
    ::testing::Values(WhitespaceCase{"empty", false}, WhitespaceCase{"three_spaces", false},
                      WhitespaceCase{"tab", false}, WhitespaceCase{"no_break_space", false},
                      WhitespaceCase{"ideographic_space", false},
                      WhitespaceCase{"mixed_spaces", false}, WhitespaceCase{"line_feed", true},
                      WhitespaceCase{"carriage_return_line_feed", true},
                      WhitespaceCase{"padded_letter", true}));
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

TEST(ContactExtractor, NumbersCustomLabelsOnceAcrossListsContactsAndExtractions) {
  const auto first = loadTestProfile("contacts-shared-labels.json");
  ChangingPlatform phone(first);
  ContactExtractor extractor(phone);

  const json section = sectionJson(extractor.extract());
  ASSERT_EQ(section.size(), 2u);
  // New labels are numbered in row order: phones, URLs, postal addresses,
  // e-mail addresses, relations. Social and messaging labels take no number.
  const json& firstRow = section.at(0);
  EXPECT_EQ(labelCodes(firstRow.at(phoneNumbers)), json({1, 2}));
  EXPECT_EQ(labelCodes(firstRow.at(urlAddresses)), json({3}));
  EXPECT_EQ(labelCodes(firstRow.at(postalAddresses)), json({4, 2}));
  EXPECT_EQ(labelCodes(firstRow.at(emailAddresses)), json({5, 1}));
  EXPECT_EQ(labelCodes(firstRow.at(contactRelations)), json({6}));
  const json& secondRow = section.at(1);
  EXPECT_EQ(labelCodes(secondRow.at(phoneNumbers)), json({3}));
  EXPECT_EQ(labelCodes(secondRow.at(emailAddresses)), json({1}));
  EXPECT_EQ(labelCodes(secondRow.at(contactRelations)), json({7}));

  // Labels keep their numbers in a later extraction; new ones continue the count.
  phone.current = loadTestProfile("contacts-shared-labels-later.json");
  const json later = sectionJson(extractor.extract());
  EXPECT_EQ(labelCodes(later.at(0).at(phoneNumbers)), json({8}));
  EXPECT_EQ(labelCodes(later.at(0).at(postalAddresses)), json({1}));
  EXPECT_EQ(labelCodes(later.at(0).at(emailAddresses)), json({2}));

  phone.current = first;
  EXPECT_EQ(sectionJson(extractor.extract()), section);
}

TEST(ContactExtractor, WritesPredefinedLabelsAndNumbersTheOthers) {
  const json section = extractContacts("contacts-predefined-labels.json");
  // A predefined label is "_$!<" followed later on the same line by ">!$_".
  EXPECT_EQ(labelCodes(contactRow(section, "labels").at(phoneNumbers)),
            json({"_$!<Mobile>!$_", 0, 1, 2, "my _$!<Main>!$_ line", 3, 4, 5, "_$!<\n_$!<Fax>!$_",
                  "_$!<>!$_", 6, "_$!<Mobile>!$_"}));
}

TEST(ContactExtractor, CanonicallyEquivalentLabelsShareANumber) {
  const json row = contactRow(extractContacts("contacts-equivalent-labels.json"), "labels");
  // Composed and decomposed forms are one label; compatibility forms (the
  // "fi" ligature) are not.
  EXPECT_EQ(labelCodes(row.at(phoneNumbers)), json({1, 1, 2, 3, 3, 3, 4, 5, 6, 6}));
  EXPECT_EQ(labelCodes(row.at(emailAddresses)), json({1}));
}

TEST(ContactExtractor, WritesNullForAbsentListsAndOneRowPerEntry) {
  const json section = extractContacts("contacts-lists.json");
  const json bare = contactRow(section, "no-lists");
  for (std::size_t position = socialProfiles; position <= instantMessageAddresses; ++position) {
    EXPECT_EQ(bare.at(position), nullptr) << "position " << position + 1;
  }

  const json row = contactRow(section, "one-of-each");
  EXPECT_EQ(row.at(birthday), 645148800.25);
  EXPECT_EQ(row.at(nonGregorianBirthday), -86400.5);
  EXPECT_EQ(row.at(contactType), 1);
  EXPECT_EQ(row.at(socialProfiles),
            json::parse(std::string(R"([["social-unlabelled",null,")") + md5OfEmpty +
                        R"(",true,false,false],["social-labelled",")" + md5OfAbc + R"(",")" +
                        md5OfAbc + R"(",false,true,true]])"));
  EXPECT_EQ(row.at(phoneNumbers), json::parse(R"([["phone","_$!<Mobile>!$_",true]])"));
  EXPECT_EQ(row.at(urlAddresses), json::parse(R"([["url",0,false]])"));
  // Countries are written as entered; the other address texts become flags.
  EXPECT_EQ(
      row.at(postalAddresses),
      json::parse(R"([["postal","_$!<Home>!$_",true,true,false,true," Deutschland ","de",)"
                  R"(false,true],["postal-empty",0,false,false,false,false,"","",false,false]])"));
  EXPECT_EQ(row.at(emailAddresses), json::parse(R"([["email","_$!<Work>!$_",true]])"));
  EXPECT_EQ(row.at(contactRelations), json::parse(R"([["relation","_$!<Mother>!$_",true]])"));
  // An empty label is still a label, and an empty service is still digested.
  EXPECT_EQ(row.at(instantMessageAddresses), json::parse(std::string(R"([["im",")") + md5OfEmpty +
                                                         R"(",")" + md5OfEmpty + R"(",false]])"));
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
  const json row = sectionJson(extractor.extract()).at(0);

  ASSERT_EQ(row.size(), 27u);
  const auto flag = [](bool offered) { return offered ? json(true) : json(nullptr); };
  EXPECT_EQ(row.at(phoneticOrganizationName), flag(system.phoneticOrganizationName));
  EXPECT_EQ(row.at(note), flag(system.note));
  const json& postal = row.at(postalAddresses).at(0);
  ASSERT_EQ(postal.size(), 10u);
  EXPECT_EQ(postal.at(8), flag(system.postalSubAreas));
  EXPECT_EQ(postal.at(9), flag(system.postalSubAreas));

  // What is read is also what is asked for; the note is asked for again at
  // every extraction on the systems that offer it.
  const auto asked = [&platform](std::string_view key) {
    const std::vector<std::string> keys = platform->lastKeysToFetch();
    return std::count(keys.begin(), keys.end(), key);
  };
  EXPECT_EQ(asked("phoneticOrganizationName"), system.phoneticOrganizationName ? 1 : 0);
  EXPECT_EQ(asked("subAdministrativeArea"), system.postalSubAreas ? 1 : 0);
  EXPECT_EQ(asked("subLocality"), system.postalSubAreas ? 1 : 0);
  EXPECT_EQ(asked("note"), system.note ? 1 : 0);
  const std::size_t keysAfterFirst = platform->lastKeysToFetch().size();
  EXPECT_EQ(keysAfterFirst,
            41u + system.phoneticOrganizationName + 2u * system.postalSubAreas + system.note);
  EXPECT_EQ(sectionJson(extractor.extract()).at(0), row);
  EXPECT_EQ(platform->lastKeysToFetch().size(), keysAfterFirst + system.note);
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
  EXPECT_EQ(section.at(0).at(identifier), "first");
  EXPECT_EQ(section.at(1).at(identifier), "second");
  EXPECT_EQ(section.at(2), "EXTRACTING ERROR : The address book is being synchronized.");
}

class ContactsRefused : public ::testing::TestWithParam<const char*> {};

TEST_P(ContactsRefused, GivesOnlyTheAccessDeniedEntry) {
  const auto platform = loadTestProfile(GetParam());
  ContactExtractor extractor(*platform);
  EXPECT_EQ(sectionJson(extractor.extract()), json({"EXTRACTING ERROR : Access denied Contacts"}));
  EXPECT_TRUE(platform->lastKeysToFetch().empty()) << "the address book was read";
}

INSTANTIATE_TEST_SUITE_P(Statuses, ContactsRefused,
                         ::testing::Values("address-book-denied.json",
                                           "address-book-restricted.json"));

// Every personal text of the profile holds a marker beginning "secret-"; none
// may reach the document, while identifiers, countries and predefined labels do.
TEST(ContactExtractor, NoPersonalTextReachesTheDocument) {
  const std::string profile = "contacts-privacy.json";
  std::vector<std::string> markers;
  const std::function<void(const json&)> collect = [&](const json& value) {
    if (value.is_string() && value.get<std::string>().starts_with("secret-")) {
      markers.push_back(value.get<std::string>());
    }
    if (value.is_structured()) {
      for (const json& child : value) collect(child);
    }
  };
  collect(json::parse(std::ifstream(test::testDataPath(profile))));
  ASSERT_GE(markers.size(), 60u);

  const auto platform = loadTestProfile(profile);
  ContactExtractor contacts(*platform);
  ContactGroupExtractor groups("ContactGroups", {"identifier", "name"}, *platform);
  DatasetDocument document;
  document.push_back(contacts.extract());
  document.push_back(groups.extract());
  const std::string written = writeJson(document).str();

  for (const std::string& marker : markers) {
    EXPECT_EQ(written.find(marker), std::string::npos) << marker;
  }
  for (const char* clear :
       {"contact-1", "phone-2", "group-1", "Deutschland", "\"de\"", "_$!<Home>!$_"}) {
    EXPECT_NE(written.find(clear), std::string::npos) << clear;
  }
}

}  // namespace
}  // namespace tavrin
