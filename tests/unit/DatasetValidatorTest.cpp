#include "../support/CodecTestData.hpp"

#include "DatasetValidator.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavrin/codec.hpp>

#include <fstream>
#include <functional>
#include <string>

namespace tavrin::sandbox {
namespace {

using nlohmann::json;
using testdata::bytesOf;
using testdata::caseName;

json validDocument() {
  std::ifstream file(TAVRIN_TEST_DATA_DIR "/sandbox/valid-dataset.json");
  return json::parse(file);
}

std::string rawDeflate(std::string_view text) {
  const auto compressed = deflate(bytesOf(text));
  return {compressed->begin(), compressed->end()};
}

std::string base64(std::string_view data) { return base64Encode(bytesOf(data)); }

std::string payload(const json& document) { return base64(rawDeflate(document.dump())); }

TEST(DatasetValidator, AcceptsTheFixtureAndCountsItsSections) {
  const json document = validDocument();
  const auto decoded = DatasetValidator().decode(payload(document));
  ASSERT_TRUE(decoded.valid()) << *decoded.problem;
  EXPECT_EQ(decoded.json, document.dump());
  EXPECT_EQ(decoded.jsonSize, document.dump().size());
  EXPECT_EQ(decoded.deflateSize, rawDeflate(document.dump()).size());
  EXPECT_EQ(decoded.base64Size, payload(document).size());
  ASSERT_EQ(decoded.sections.size(), 14u);
  EXPECT_EQ(decoded.sections[1].name, "Contacts");
  EXPECT_EQ(decoded.sections[1].entries, 3u);
  EXPECT_EQ(decoded.sections[1].note, "error");
  EXPECT_EQ(decoded.sections[5].note, "access denied");
  EXPECT_EQ(decoded.sections[6].entries, 0u);
  EXPECT_EQ(decoded.sections[12].entries, 31u);
}

struct Malformed {
  const char* name;
  std::function<void(json&)> change;
  std::string problem;
};

class MalformedDocument : public testing::TestWithParam<Malformed> {};

TEST_P(MalformedDocument, IsRefusedWithTheFirstProblemNamed) {
  json document = validDocument();
  GetParam().change(document);
  EXPECT_EQ(DatasetValidator::validate(document).value_or("accepted"), GetParam().problem);
  // Through the whole decoding the same problem is reported.
  EXPECT_EQ(DatasetValidator().decode(payload(document)).problem.value_or("accepted"),
            GetParam().problem);
}

json& section(json& document, std::size_t index) { return document[index].begin().value(); }

// The change that puts `value` at `pointer`.
std::function<void(json&)> put(const char* pointer, json value) {
  return [=](json& d) { d[json::json_pointer(pointer)] = value; };
}

INSTANTIATE_TEST_SUITE_P(
    Structure, MalformedDocument,
    testing::Values(
        Malformed{"NotAList", put("", json::object()),
                  "document: expected a list of 14 sections, got an object"},
        Malformed{"SectionMissing", [](json& d) { d.erase(3); },
                  R"(section 4: expected "MediaAlbums", got "Video")"},
        Malformed{"LastSectionMissing", [](json& d) { d.erase(13); },
                  R"(section 14: expected "Permissions", but the document ends after 13 sections)"},
        Malformed{"SectionAfterTheLast", put("/14", {{"Extra", json::array()}}),
                  R"(section 15: unexpected "Extra" after the last section)"},
        Malformed{
            "SectionWithTwoMembers", put("/2/Other", json::array()),
            R"(section 3: expected an object with the one member "ContactGroups", got an object)"},
        Malformed{"SectionNotAList", put("/11/GeoInfo", json::object()),
                  "section GeoInfo: expected a list, got an object"},
        Malformed{"HeaderOneValueShort", [](json& d) { section(d, 0).erase(8); },
                  "section GeneralInfo: expected 9 values, got 8"},
        Malformed{"HeaderIntegerWithFraction", put("/0/GeneralInfo/0", 8.5),
                  "section GeneralInfo, position 1: expected integer, got number 8.5"},
        Malformed{"HeaderTimeAsText", put("/0/GeneralInfo/2", "1700000000"),
                  R"(section GeneralInfo, position 3: expected number, got string "1700000000")"},
        Malformed{"NullWhereNotAllowed", put("/1/Contacts/0/0", nullptr),
                  "section Contacts, row 1, position 1: expected string, got null"},
        Malformed{"FlagAsNumber", put("/2/ContactGroups/0/1", 1),
                  "section ContactGroups, row 1, position 2: expected boolean, got number 1"},
        Malformed{"NegativeUnsigned", put("/12/GeneralData/13", -1),
                  "section GeneralData, position 14: expected unsigned integer, got number -1"},
        Malformed{"UnsignedBeyondSigned",
                  put("/3/MediaAlbums/0/3", std::uint64_t{18446744073709551615u}),
                  "section MediaAlbums, row 1, position 4: expected integer, got number "
                  "18446744073709551615"},
        Malformed{"EmptyListInsteadOfNull", put("/1/Contacts/1/21", json::array()),
                  "section Contacts, row 2, position 22: expected null or a non-empty list of "
                  "rows, got an empty list"},
        Malformed{
            "DigestInUpperCase", put("/1/Contacts/0/20/0/2", "D41D8CD98F00B204E9800998ECF8427E"),
            "section Contacts, row 1, position 21, row 1, position 3: expected MD5 digest "
            R"((32 lower-case hexadecimal digits), got string "D41D8CD98F00B204E9800998ECF8427E")"},
        Malformed{"LabelCodeAsBoolean", put("/1/Contacts/0/24/0/1", true),
                  "section Contacts, row 1, position 25, row 1, position 2: expected label text "
                  "or category id, got true"},
        Malformed{"AccessDeniedBesideRows",
                  [](json& d) { section(d, 5).push_back(section(d, 4)[0]); },
                  "section Images, row 1: an access-denied entry must be the only entry"},
        Malformed{
            "AccessDeniedWithTheSectionName",
            put("/7/Calendars", {"EXTRACTING ERROR : Access denied Calendars"}),
            R"(section Calendars, row 1: expected "EXTRACTING ERROR : Access denied CalendarsEvent", got "EXTRACTING ERROR : Access denied Calendars")"},
        Malformed{"AccessDeniedWhereNoPermissionIsRead",
                  put("/10/CaptureDevice", {"EXTRACTING ERROR : Access denied CaptureDevice"}),
                  "section CaptureDevice, row 1: this source never reports access denied"},
        Malformed{"ErrorWhereNoneIsRecorded", put("/4/Video", {"EXTRACTING ERROR : broken"}),
                  "section Video, row 1: this source never reports an error"},
        Malformed{
            "ErrorBeforeRows",
            [](json& d) { section(d, 1).insert(section(d, 1).begin(), "EXTRACTING ERROR : x"); },
            "section Contacts, row 1: an error entry must be the last entry"},
        Malformed{"ErrorBesideRows",
                  [](json& d) { section(d, 2).push_back("EXTRACTING ERROR : x"); },
                  "section ContactGroups, row 3: an error entry must be the only entry"},
        Malformed{
            "OtherTextAsRow", put("/8/CalendarEvents", {"event"}),
            R"(section CalendarEvents, row 1: expected a row of 23 values, got string "event")"},
        Malformed{
            "PermissionsOutOfOrder",
            [](json& d) { std::swap(section(d, 13)[0], section(d, 13)[1]); },
            R"(section Permissions, row 1, position 1: expected "NSCalendarsUsageDescription", got string "NSRemindersUsageDescription")"},
        Malformed{"PermissionMissing", [](json& d) { section(d, 13).erase(3); },
                  "section Permissions: expected 4 rows, got 3"},
        Malformed{"PermissionFlagTwo", put("/13/Permissions/2/1", 2),
                  "section Permissions, row 3, position 2: expected 0 or 1, got number 2"},
        Malformed{"CaptureDeviceOneValueLong",
                  [](json& d) { section(d, 10)[0].push_back(nullptr); },
                  "section CaptureDevice, row 1: expected 49 values, got 50"}),
    caseName);

TEST(DatasetValidator, AcceptsWhatTheSourcesMayWrite) {
  json document = validDocument();
  // Integral numbers where doubles belong.
  section(document, 0)[2] = 1700000000;
  section(document, 10)[0][5] = 2;
  // The failure entries each source may write.
  section(document, 1) = json::array({"EXTRACTING ERROR : Access denied Contacts"});
  section(document, 2) = json::array({"EXTRACTING ERROR : groups failed"});
  section(document, 3) = json::array({"EXTRACTING ERROR : Access denied MediaAlbums"});
  section(document, 8) = json::array({"EXTRACTING ERROR : dates"});
  section(document, 9) = json::array({"EXTRACTING ERROR : no reminder list"});
  section(document, 10) = json::array({"EXTRACTING ERROR : no device list"});
  EXPECT_EQ(DatasetValidator::validate(document), std::nullopt);
}

struct BadPayload {
  const char* name;
  std::string text;
  std::string problem;  // the start of the expected problem
};

class MalformedPayload : public testing::TestWithParam<BadPayload> {};

TEST_P(MalformedPayload, IsRefusedAtTheRightStage) {
  const auto decoded = DatasetValidator().decode(GetParam().text);
  ASSERT_FALSE(decoded.valid());
  EXPECT_EQ(decoded.problem->substr(0, GetParam().problem.size()), GetParam().problem)
      << *decoded.problem;
}

INSTANTIATE_TEST_SUITE_P(
    Decoding, MalformedPayload,
    testing::Values(BadPayload{"Empty", "", "payload: empty"},
                    BadPayload{"LengthNotAMultipleOfFour",
                               "QUJD=", "payload: not base64: its length 5 is not a multiple of 4"},
                    BadPayload{"PaddingInside", "QQ==QUJD",
                               "payload: not base64: character 3 is not in the base64 alphabet"},
                    BadPayload{"NonZeroTrailingBits", "QR==",
                               "payload: not base64: the bits after the last byte are not zero"},
                    BadPayload{"ZlibContainer", base64Encode(*zip(bytesOf("[1,2,3]"))),
                               "payload: not a raw DEFLATE stream ("},
                    BadPayload{"Truncated",
                               base64(rawDeflate(validDocument().dump()).substr(0, 400)),
                               "payload: the DEFLATE stream ends before its last block"},
                    BadPayload{"TrailingBytes", base64(rawDeflate("[]") + "xyz"),
                               "payload: 3 bytes follow the end of the DEFLATE stream"},
                    BadPayload{"NotJson", base64(rawDeflate("{not json")),
                               "payload: not JSON: parse error at line 1, column 3"},
                    BadPayload{"NestedTooDeep", base64(rawDeflate(std::string(100000, '['))),
                               "payload: the JSON nests deeper than 32 levels"}),
    caseName);

TEST(DatasetValidator, StopsInflatingAtTheSizeLimit) {
  // A small payload that inflates far beyond the limit is cut off there.
  const auto bomb =
      DatasetValidator(1u << 20).decode(base64(rawDeflate(std::string(8u << 20, ' '))));
  EXPECT_EQ(bomb.problem.value_or(""),
            "payload: it inflates to more than the limit of 1048576 bytes");
  EXPECT_EQ(bomb.jsonSize, 0u);

  const std::string text = validDocument().dump();
  EXPECT_TRUE(DatasetValidator(text.size()).decode(base64(rawDeflate(text))).valid());
  EXPECT_FALSE(DatasetValidator(text.size() - 1).decode(base64(rawDeflate(text))).valid());
}

}  // namespace
}  // namespace tavrin::sandbox
