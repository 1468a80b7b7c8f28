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

#include <algorithm>
#include <cstdio>
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
  bool digest;  // sent as its MD5 digest, else in clear
  std::string_view kind;
  std::string_view section;
  std::vector<int> path;
};

const std::vector<Allowance> allowances = {
    // A postal address's country and ISO country code are sent as entered
    // (contact row 24, address rows 7 and 8).
    {false, "country", "Contacts", {any, 23, any, 6}},
    {false, "isoCountryCode", "Contacts", {any, 23, any, 7}},
    // A social profile's label and service name travel as their digests
    // (contact row 21, rows 2 and 3).
    {true, "label", "Contacts", {any, 20, any, 1}},
    {true, "socialService", "Contacts", {any, 20, any, 2}},
    // So do an instant-message address's label and service name (contact row 27).
    {true, "label", "Contacts", {any, 26, any, 1}},
    {true, "messageService", "Contacts", {any, 26, any, 2}},
};

// Every kind of personal text the phone holds must have been in the test,
// or the proof would hold for want of data.
constexpr const char* expectedKinds =
    "givenName middleName familyName previousFamilyName nameSuffix namePrefix nickname "
    "phoneticGivenName phoneticFamilyName organizationName departmentName jobTitle note "
    "phoneNumber url email relationName street city state postalCode country isoCountryCode "
    "subLocality socialUrl socialUsername socialUserIdentifier socialService messageUsername "
    "messageService label groupName sourceTitle organizerName eventLocation reminderLocation "
    "placeName";

const std::regex markerPattern("PII-[A-Za-z]+-[0-9]+");

std::string md5Hex(std::string_view text) {
  unsigned char digest[16];
  EVP_Digest(text.data(), text.size(), digest, nullptr, EVP_md5(), nullptr);
  char hex[33];
  for (int i = 0; i < 16; ++i) std::snprintf(hex + 2 * i, 3, "%02x", digest[i]);
  return hex;
}

std::string kindOf(const std::string& marker) {
  const auto first = marker.find('-') + 1;
  return marker.substr(first, marker.find('-', first) - first);
}

// One text of the upload and where it is.
struct Found {
  std::string section;
  std::vector<int> path;
  std::string text;
};

std::string describe(const Found& found) {
  std::string where = found.section;
  for (const int index : found.path) where += '/' + std::to_string(index);
  return where + ": " + found.text;
}

bool allows(const Allowance& allowance, bool digest, const std::string& kind, const Found& found) {
  if (allowance.digest != digest || allowance.kind != kind || allowance.section != found.section ||
      allowance.path.size() != found.path.size()) {
    return false;
  }
  for (std::size_t i = 0; i < found.path.size(); ++i) {
    if (allowance.path[i] != any && allowance.path[i] != found.path[i]) return false;
  }
  return true;
}

struct Collection {
  std::set<std::string> markers;  // every marker the phone holds
  json upload;                    // the dataset as the server received it
  std::vector<Found> texts;       // every text of the upload
  std::vector<std::string> log;   // every log line of the run
};

// The phone, generated and collected once for all the tests.
const Collection& collection() {
  static const Collection collected = [] {
    tool::GeneratorOptions options;
    options.seed = 2024;
    options.markers = true;
    options.contacts = 2500, options.groups = 12, options.calendars = 8, options.events = 400;
    options.reminders = 400, options.assets = 600, options.albums = 80, options.devices = 8;
    const auto profile = tool::ProfileGenerator(options).generate();

    Collection result;
    std::ostringstream profileText;
    tool::writeDeviceProfile(profile, profileText);
    const std::string text = profileText.str();
    for (std::sregex_iterator it(text.begin(), text.end(), markerPattern), end; it != end; ++it) {
      result.markers.insert(it->str());
    }

    testing_support::TlsTestBed bed;
    ServiceOptions serviceOptions = bed.options();
    serviceOptions.setPlatform(std::make_shared<platform::ProfilePlatform>(profile))
        .setLog([&log = result.log](LogLevel, std::string_view line) { log.emplace_back(line); });
    // A refused token, so that the new login is logged too.
    bed.server.script(testing_support::TestServer::uploadPath, {401, ""});
    TavrinService(bed.server.url(), "privacy-key", serviceOptions).collectData("privacy-1");
    result.upload = json::parse(testing_support::uploadedDocument(bed.server.received().back()));
    // Every text with its place, from pointers such as "/3/Contacts/17/23/0/6".
    const json flat = result.upload.flatten();
    for (const auto& [pointer, value] : flat.items()) {
      if (!value.is_string()) continue;
      std::istringstream parts(pointer.substr(pointer.find('/', 1) + 1));
      Found found{{}, {}, value.get<std::string>()};
      std::getline(parts, found.section, '/');
      for (std::string i; std::getline(parts, i, '/');) found.path.push_back(std::stoi(i));
      result.texts.push_back(std::move(found));
    }
    return result;
  }();
  return collected;
}

TEST(Privacy, ThePhoneHoldsEveryKindOfPersonalText) {
  std::set<std::string> kinds;
  for (const auto& marker : collection().markers) kinds.insert(kindOf(marker));
  std::istringstream expected(expectedKinds);
  for (std::string kind; expected >> kind;) EXPECT_TRUE(kinds.count(kind)) << kind;
  EXPECT_EQ(collection().upload.size(), 14U);
}

TEST(Privacy, NoMarkerTravelsInClearOrAsADigestOutsideItsAllowance) {
  std::map<std::string, std::string> byDigest;
  for (const auto& marker : collection().markers) byDigest.emplace(md5Hex(marker), marker);
  std::set<std::pair<bool, std::string>> used, allowed;  // (as a digest, kind)
  for (const auto& allowance : allowances) allowed.emplace(allowance.digest, allowance.kind);
  for (const auto& found : collection().texts) {
    const auto digestOf = byDigest.find(found.text);
    const bool digest = digestOf != byDigest.end();
    if (!digest && found.text.find("PII") == std::string::npos) continue;
    // A text that holds a marker is the marker itself: nothing is cut or joined.
    ASSERT_TRUE(digest || std::regex_match(found.text, markerPattern)) << describe(found);
    ASSERT_TRUE(digest || collection().markers.count(found.text)) << describe(found);
    const std::string marker = digest ? digestOf->second : found.text;
    const auto kind = kindOf(marker);
    const bool allowedHere =
        std::any_of(allowances.begin(), allowances.end(),
                    [&](const Allowance& a) { return allows(a, digest, kind, found); });
    EXPECT_TRUE(allowedHere) << (digest ? "leak of the digest of " + marker : "leak") << " at "
                             << describe(found);
    if (allowedHere) used.emplace(digest, kind);
  }
  // Each kind the allowances name is found in its form, so the texts read are the ones sent.
  EXPECT_EQ(used, allowed);
}

// The log tells the whole run (every source, every exchange, the new login,
// the sizes) and never a marker, its digest, the key or a token.
TEST(Privacy, NoLogLineHoldsPersonalTextTheKeyOrAToken) {
  std::set<std::string> secrets{"privacy-key", "token-1", "token-2", "Bearer"};
  for (const auto& marker : collection().markers) secrets.insert({marker, md5Hex(marker)});
  std::string all;
  for (const auto& line : collection().log) {
    all += line + '\n';
    for (const auto& secret : secrets) EXPECT_EQ(line.find(secret), std::string::npos) << line;
  }
  // 13 sources, 5 exchanges, the new login, the sizes, the login and the run done.
  EXPECT_EQ(collection().log.size(), 13U + 5 + 4) << all;
  for (const char* told : {"source Contacts: 2500 entries in ", "upload: HTTP 401 in ",
                           "logging in again", "bytes of JSON", "collection done in "}) {
    EXPECT_NE(all.find(told), std::string::npos) << told << " in\n" << all;
  }
}

}  // namespace
}  // namespace tavrin
