// The privacy proof. A generated phone in which every personal text is a
// unique marker ("PII-givenName-17") is collected over every source; the
// upload may carry a marker, in clear or as its MD5 digest, only where the
// collection sends that text by design. The allowances below say where and
// why; anything else found is a leak.

#include "TlsTestBed.hpp"

#include "generator/DeviceProfileWriter.hpp"
#include "generator/ProfileGenerator.hpp"

#include "platform/profile/ProfilePlatform.hpp"

#include <tavrin/service.hpp>

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <nlohmann/json.hpp>

#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace tavrin {
namespace {

using nlohmann::json;

// Where a marker may appear: its kind, the section, and the path of row
// positions below the section (0-based; `any` matches every index).
constexpr int any = -1;
struct Allowance {
  std::string_view kind;
  std::string_view section;
  std::vector<int> path;
  std::string_view why;
};

// Texts sent as they are.
const std::vector<Allowance> inClear = {
    {"country",
     "Contacts",
     {any, 23, any, 6},
     "a postal address's country is sent as entered (contact row 24, address row 7)"},
    {"isoCountryCode",
     "Contacts",
     {any, 23, any, 7},
     "a postal address's ISO country code is sent as entered (contact row 24, address row 8)"},
};

// Texts sent as their MD5 digest.
const std::vector<Allowance> asDigest = {
    {"label", "Contacts", {any, 20, any, 1}, "a social profile's label travels as its digest"},
    {"socialService",
     "Contacts",
     {any, 20, any, 2},
     "a social profile's service name travels as its digest"},
    {"label",
     "Contacts",
     {any, 26, any, 1},
     "an instant-message address's label travels as its digest"},
    {"messageService",
     "Contacts",
     {any, 26, any, 2},
     "an instant-message address's service name travels as its digest"},
};

// Every kind of personal text the phone holds must have been in the test,
// or the proof would hold for want of data.
const std::set<std::string> expectedKinds = {"givenName",
                                             "middleName",
                                             "familyName",
                                             "previousFamilyName",
                                             "nameSuffix",
                                             "namePrefix",
                                             "nickname",
                                             "phoneticGivenName",
                                             "phoneticFamilyName",
                                             "organizationName",
                                             "departmentName",
                                             "jobTitle",
                                             "note",
                                             "phoneNumber",
                                             "url",
                                             "email",
                                             "relationName",
                                             "street",
                                             "city",
                                             "state",
                                             "postalCode",
                                             "country",
                                             "isoCountryCode",
                                             "subLocality",
                                             "socialUrl",
                                             "socialUsername",
                                             "socialUserIdentifier",
                                             "socialService",
                                             "messageUsername",
                                             "messageService",
                                             "label",
                                             "groupName",
                                             "sourceTitle",
                                             "organizerName",
                                             "eventLocation",
                                             "reminderLocation",
                                             "placeName"};

std::string md5Hex(std::string_view text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_Digest(text.data(), text.size(), digest, &length, EVP_md5(), nullptr);
  static constexpr char hex[] = "0123456789abcdef";
  std::string out;
  for (unsigned int i = 0; i < length; ++i) {
    out += hex[digest[i] >> 4];
    out += hex[digest[i] & 15];
  }
  return out;
}

std::string kindOf(const std::string& marker) {
  const auto first = marker.find('-') + 1;
  return marker.substr(first, marker.find('-', first) - first);
}

bool matches(const Allowance& allowance, const std::string& kind, const std::string& section,
             const std::vector<int>& path) {
  if (allowance.kind != kind || allowance.section != section) return false;
  if (allowance.path.size() != path.size()) return false;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (allowance.path[i] != any && allowance.path[i] != path[i]) return false;
  }
  return true;
}

// One text of the upload and where it is.
struct Found {
  std::string section;
  std::vector<int> path;
  std::string text;
};

void collectTexts(const json& value, const std::string& section, std::vector<int>& path,
                  std::vector<Found>& out) {
  if (value.is_string()) {
    out.push_back({section, path, value.get<std::string>()});
  } else if (value.is_array()) {
    for (std::size_t i = 0; i < value.size(); ++i) {
      path.push_back(static_cast<int>(i));
      collectTexts(value[i], section, path, out);
      path.pop_back();
    }
  }
}

class PrivacyTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    tool::GeneratorOptions options;
    options.seed = 2024;
    options.markers = true;
    options.contacts = 2500, options.groups = 12, options.calendars = 8, options.events = 400;
    options.reminders = 400, options.assets = 600, options.albums = 80, options.devices = 8;
    const auto profile = tool::ProfileGenerator(options).generate();

    std::ostringstream profileText;
    tool::writeDeviceProfile(profile, profileText);
    const std::string text = profileText.str();
    const std::regex marker("PII-[A-Za-z]+-[0-9]+");
    for (std::sregex_iterator it(text.begin(), text.end(), marker), end; it != end; ++it) {
      markers().insert(it->str());
    }

    upload() = collect(profile);
    for (const auto& section : upload()) {
      std::vector<int> path;
      collectTexts(section.begin().value(), section.begin().key(), path, texts());
    }
  }

  // The dataset as the server receives it from a collection of the phone:
  // the upload's data decoded and inflated.
  static json collect(const platform::DeviceProfile& profile) {
    testing_support::TlsTestBed bed;
    ServiceOptions options = bed.options();
    options.platform = std::make_shared<platform::ProfilePlatform>(profile);
    TavrinService service(bed.server.url(), "privacy-key", options);
    service.collectData("privacy-1");
    return json::parse(testing_support::uploadedDocument(bed.server.received().back()));
  }

  static std::set<std::string>& markers() {
    static std::set<std::string> all;
    return all;
  }
  static json& upload() {
    static json document;
    return document;
  }
  static std::vector<Found>& texts() {
    static std::vector<Found> all;
    return all;
  }
};

std::string describe(const Found& found) {
  std::string where = found.section;
  for (const int index : found.path) where += '/' + std::to_string(index);
  return where + ": " + found.text;
}

TEST_F(PrivacyTest, ThePhoneHoldsEveryKindOfPersonalText) {
  std::set<std::string> kinds;
  for (const auto& m : markers()) kinds.insert(kindOf(m));
  for (const auto& kind : expectedKinds) EXPECT_TRUE(kinds.count(kind)) << kind;
  EXPECT_EQ(upload().size(), 14U);
}

TEST_F(PrivacyTest, NoMarkerTravelsInClearOutsideItsAllowance) {
  const std::regex marker("PII-[A-Za-z]+-[0-9]+");
  std::set<std::string> allowedKindsSeen;
  for (const auto& found : texts()) {
    if (found.text.find("PII") == std::string::npos) continue;
    std::smatch match;
    // A text that holds a marker is the marker itself: nothing is cut or joined.
    ASSERT_TRUE(std::regex_match(found.text, match, marker)) << describe(found);
    ASSERT_TRUE(markers().count(found.text)) << describe(found);
    const auto kind = kindOf(found.text);
    const bool allowed = std::any_of(inClear.begin(), inClear.end(), [&](const Allowance& a) {
      return matches(a, kind, found.section, found.path);
    });
    EXPECT_TRUE(allowed) << "leak: " << describe(found);
    if (allowed) allowedKindsSeen.insert(kind);
  }
  // The allowances are used, so the texts read are the ones sent.
  EXPECT_EQ(allowedKindsSeen, (std::set<std::string>{"country", "isoCountryCode"}));
}

TEST_F(PrivacyTest, NoMarkerTravelsAsADigestOutsideItsAllowance) {
  std::map<std::string, std::string> byDigest;
  for (const auto& m : markers()) byDigest.emplace(md5Hex(m), m);
  std::set<std::string> allowedKindsSeen;
  for (const auto& found : texts()) {
    const auto it = byDigest.find(found.text);
    if (it == byDigest.end()) continue;
    const auto kind = kindOf(it->second);
    const bool allowed = std::any_of(asDigest.begin(), asDigest.end(), [&](const Allowance& a) {
      return matches(a, kind, found.section, found.path);
    });
    EXPECT_TRUE(allowed) << "digest of " << it->second << " at " << describe(found);
    if (allowed) allowedKindsSeen.insert(kind);
  }
  EXPECT_EQ(allowedKindsSeen, (std::set<std::string>{"label", "socialService", "messageService"}));
}

}  // namespace
}  // namespace tavrin
