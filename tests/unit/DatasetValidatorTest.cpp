#include "DatasetValidator.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavrin/codec.hpp>

#include <fstream>
#include <functional>
#include <sstream>
#include <string>

namespace tavrin::sandbox {
namespace {

using nlohmann::json;

json validDocument() {
  std::ifstream file(TAVRIN_TEST_DATA_DIR "/sandbox/valid-dataset.json");
  return json::parse(file);
}

std::vector<std::uint8_t> bytes(std::string_view text) { return {text.begin(), text.end()}; }

std::string rawDeflate(std::string_view text) {
  const auto compressed = deflate(bytes(text));
  return {compressed->begin(), compressed->end()};
}

std::string base64(std::string_view data) { return base64Encode(bytes(data)); }

std::string payload(const json& document) { return base64(rawDeflate(document.dump())); }

struct CaseName {
  template <typename Case>
  std::string operator()(const testing::TestParamInfo<Case>& test) const {
    return test.param.name;
  }
};

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

void PrintTo(const Malformed& value, std::ostream* out) { *out << value.name; }

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

INSTANTIATE_TEST_SUITE_P(
    Structure, MalformedDocument,
    testing::Values(
        Malformed{"NotAList", [](json& d) { d = json::object(); },
                  "document: expected a list of 14 sections, got an object"},
        Malformed{"SectionMissing", [](json& d) { d.erase(3); },
                  R"(section 4: expected "MediaAlbums", got "Video")"},
        Malformed{"SectionsSwapped", [](json& d) { std::swap(d[4], d[5]); },
                  R"(section 5: expected "Video", got "Images")"},
        Malformed{"LastSectionMissing", [](json& d) { d.erase(13); },
                  R"(section 14: expected "Permissions", but the document ends after 13 sections)"},
        Malformed{"SectionAfterTheLast",
                  [](json& d) {
                    d.push_back({{"Extra", json::array()}});
                  },
                  R"(section 15: unexpected "Extra" after the last section)"},
        Malformed{
            "SectionWithTwoMembers", [](json& d) { d[2]["Other"] = json::array(); },
            R"(section 3: expected an object with the one member "ContactGroups", got an object)"},
        Malformed{"SectionNotAList", [](json& d) { section(d, 11) = json::object(); },
                  "section GeoInfo: expected a list, got an object"},
        Malformed{"HeaderOneValueShort", [](json& d) { section(d, 0).erase(8); },
                  "section GeneralInfo: expected 9 values, got 8"},
        Malformed{"HeaderIntegerWithFraction", [](json& d) { section(d, 0)[0] = 8.5; },
                  "section GeneralInfo, position 1: expected integer, got number 8.5"},
        Malformed{"HeaderTimeAsText", [](json& d) { section(d, 0)[2] = "1700000000"; },
                  R"(section GeneralInfo, position 3: expected number, got string "1700000000")"},
        Malformed{"RowOneValueShort", [](json& d) { section(d, 4)[0].erase(12); },
                  "section Video, row 1: expected 13 values, got 12"},
        Malformed{"RowNotAList", [](json& d) { section(d, 2)[1] = 7; },
                  "section ContactGroups, row 2: expected a row of 2 values, got number 7"},
        Malformed{"StringWhereANumberBelongs", [](json& d) { section(d, 4)[0][4] = "1920"; },
                  R"(section Video, row 1, position 5: expected integer, got string "1920")"},
        Malformed{"NullWhereNotAllowed", [](json& d) { section(d, 1)[0][0] = nullptr; },
                  "section Contacts, row 1, position 1: expected string, got null"},
        Malformed{"FlagAsNumber", [](json& d) { section(d, 2)[0][1] = 1; },
                  "section ContactGroups, row 1, position 2: expected boolean, got number 1"},
        Malformed{"NegativeUnsigned", [](json& d) { section(d, 12)[13] = -1; },
                  "section GeneralData, position 14: expected unsigned integer, got number -1"},
        Malformed{"UnsignedBeyondSigned",
                  [](json& d) { section(d, 3)[0][3] = std::uint64_t{18446744073709551615u}; },
                  "section MediaAlbums, row 1, position 4: expected integer, got number "
                  "18446744073709551615"},
        Malformed{"NestedRowValue", [](json& d) { section(d, 1)[0][21][1][2] = 1; },
                  "section Contacts, row 1, position 22, row 2, position 3: expected boolean, "
                  "got number 1"},
        Malformed{"NestedRowShort", [](json& d) { section(d, 1)[0][23][0].erase(9); },
                  "section Contacts, row 1, position 24, row 1: expected 10 values, got 9"},
        Malformed{"EmptyListInsteadOfNull", [](json& d) { section(d, 1)[1][21] = json::array(); },
                  "section Contacts, row 2, position 22: expected null or a non-empty list of "
                  "rows, got an empty list"},
        Malformed{
            "DigestInUpperCase",
            [](json& d) { section(d, 1)[0][20][0][2] = "D41D8CD98F00B204E9800998ECF8427E"; },
            "section Contacts, row 1, position 21, row 1, position 3: expected MD5 digest "
            R"((32 lower-case hexadecimal digits), got string "D41D8CD98F00B204E9800998ECF8427E")"},
        Malformed{"LabelCodeAsBoolean", [](json& d) { section(d, 1)[0][24][0][1] = true; },
                  "section Contacts, row 1, position 25, row 1, position 2: expected label text "
                  "or category id, got true"},
        Malformed{"AccessDeniedBesideRows",
                  [](json& d) { section(d, 5).push_back(section(d, 4)[0]); },
                  "section Images, row 1: an access-denied entry must be the only entry"},
        Malformed{
            "AccessDeniedWithTheSectionName",
            [](json& d) {
              section(d, 7) = json::array({"EXTRACTING ERROR : Access denied Calendars"});
            },
            R"(section Calendars, row 1: expected "EXTRACTING ERROR : Access denied CalendarsEvent", got "EXTRACTING ERROR : Access denied Calendars")"},
        Malformed{"AccessDeniedWhereNoPermissionIsRead",
                  [](json& d) {
                    section(d, 10) =
                        json::array({"EXTRACTING ERROR : Access denied CaptureDevice"});
                  },
                  "section CaptureDevice, row 1: this source never reports access denied"},
        Malformed{"ErrorWhereNoneIsRecorded",
                  [](json& d) { section(d, 4) = json::array({"EXTRACTING ERROR : broken"}); },
                  "section Video, row 1: this source never reports an error"},
        Malformed{
            "ErrorBeforeRows",
            [](json& d) { section(d, 1).insert(section(d, 1).begin(), "EXTRACTING ERROR : x"); },
            "section Contacts, row 1: an error entry must be the last entry"},
        Malformed{"ErrorBesideRows",
                  [](json& d) { section(d, 2).push_back("EXTRACTING ERROR : x"); },
                  "section ContactGroups, row 3: an error entry must be the only entry"},
        Malformed{
            "OtherTextAsRow", [](json& d) { section(d, 8) = json::array({"event"}); },
            R"(section CalendarEvents, row 1: expected a row of 23 values, got string "event")"},
        Malformed{
            "PermissionsOutOfOrder",
            [](json& d) { std::swap(section(d, 13)[0], section(d, 13)[1]); },
            R"(section Permissions, row 1, position 1: expected "NSCalendarsUsageDescription", got string "NSRemindersUsageDescription")"},
        Malformed{"PermissionMissing", [](json& d) { section(d, 13).erase(3); },
                  "section Permissions: expected 4 rows, got 3"},
        Malformed{"PermissionFlagTwo", [](json& d) { section(d, 13)[2][1] = 2; },
                  "section Permissions, row 3, position 2: expected 0 or 1, got number 2"},
        Malformed{"GeoFlagMissing", [](json& d) { section(d, 11).erase(0); },
                  "section GeoInfo: expected 4 values, got 3"},
        Malformed{"CaptureDeviceOneValueLong",
                  [](json& d) { section(d, 10)[0].push_back(nullptr); },
                  "section CaptureDevice, row 1: expected 49 values, got 50"}),
    CaseName());

TEST(DatasetValidator, AcceptsIntegralNumbersWhereDoublesBelong) {
  json document = validDocument();
  section(document, 0)[2] = 1700000000;
  section(document, 10)[0][5] = 2;
  EXPECT_EQ(DatasetValidator::validate(document), std::nullopt);
}

TEST(DatasetValidator, AcceptsTheFailureEntriesEachSourceMayWrite) {
  json document = validDocument();
  for (const auto& [index, text] :
       std::vector<std::pair<int, const char*>>{{1, "EXTRACTING ERROR : Access denied Contacts"},
                                                {2, "EXTRACTING ERROR : groups failed"},
                                                {3, "EXTRACTING ERROR : Access denied MediaAlbums"},
                                                {8, "EXTRACTING ERROR : dates"},
                                                {9, "EXTRACTING ERROR : no reminder list"},
                                                {10, "EXTRACTING ERROR : no device list"}}) {
    section(document, static_cast<std::size_t>(index)) = json::array({text});
  }
  EXPECT_EQ(DatasetValidator::validate(document), std::nullopt);
}

struct BadPayload {
  const char* name;
  std::function<std::string()> text;
  std::string problem;  // the start of the expected problem
};

void PrintTo(const BadPayload& value, std::ostream* out) { *out << value.name; }

class MalformedPayload : public testing::TestWithParam<BadPayload> {};

TEST_P(MalformedPayload, IsRefusedAtTheRightStage) {
  const auto decoded = DatasetValidator().decode(GetParam().text());
  ASSERT_FALSE(decoded.valid());
  EXPECT_EQ(decoded.problem->substr(0, GetParam().problem.size()), GetParam().problem)
      << *decoded.problem;
}

INSTANTIATE_TEST_SUITE_P(
    Decoding, MalformedPayload,
    testing::Values(
        BadPayload{"Empty", [] { return std::string(); }, "payload: empty"},
        BadPayload{"LengthNotAMultipleOfFour", [] { return std::string("QUJD="); },
                   "payload: not base64: its length 5 is not a multiple of 4"},
        BadPayload{"CharacterOutsideTheAlphabet", [] { return std::string("QU-D"); },
                   "payload: not base64: character 3 is not in the base64 alphabet"},
        BadPayload{"LineBreak",
                   [] { return payload(validDocument()).insert(8, "\n").substr(0, 12); },
                   "payload: not base64: character 9 is not in the base64 alphabet"},
        BadPayload{"PaddingInside", [] { return std::string("QQ==QUJD"); },
                   "payload: not base64: character 3 is not in the base64 alphabet"},
        BadPayload{"NonZeroTrailingBits", [] { return std::string("QR=="); },
                   "payload: not base64: the bits after the last byte are not zero"},
        BadPayload{"NotDeflate", [] { return base64(std::string(32, '\xff')); },
                   "payload: not a raw DEFLATE stream ("},
        BadPayload{"ZlibContainer",
                   [] {
                     const auto wrapped = zip(bytes("[1,2,3]"));
                     return base64Encode(*wrapped);
                   },
                   "payload: not a raw DEFLATE stream ("},
        BadPayload{"Truncated",
                   [] {
                     std::string bytes = rawDeflate(validDocument().dump());
                     return base64(bytes.substr(0, bytes.size() / 2));
                   },
                   "payload: the DEFLATE stream ends before its last block"},
        BadPayload{"TrailingBytes", [] { return base64(rawDeflate("[]") + "xyz"); },
                   "payload: 3 bytes follow the end of the DEFLATE stream"},
        BadPayload{"NotJson", [] { return base64(rawDeflate("{not json")); },
                   "payload: not JSON: parse error at line 1, column 3"},
        BadPayload{"NumberBeyondDouble", [] { return base64(rawDeflate("[1e999999]")); },
                   "payload: not JSON: number overflow parsing '1e999999'"},
        BadPayload{"InvalidUtf8", [] { return base64(rawDeflate("[\"\xc3\x28\"]")); },
                   "payload: not JSON: "},
        BadPayload{"NestedTooDeep", [] { return base64(rawDeflate(std::string(100000, '['))); },
                   "payload: the JSON nests deeper than 32 levels"},
        BadPayload{"ValidJsonWrongShape", [] { return base64(rawDeflate("\"text\"")); },
                   "document: expected a list of 14 sections, got string \"text\""}),
    CaseName());

TEST(DatasetValidator, StopsInflatingAtTheSizeLimit) {
  // A small payload that inflates far beyond the limit is cut off there.
  const std::string bomb = base64(rawDeflate(std::string(8u << 20, ' ')));
  ASSERT_LT(bomb.size(), 100000u);
  const auto decoded = DatasetValidator(1u << 20).decode(bomb);
  EXPECT_EQ(decoded.problem.value_or(""),
            "payload: it inflates to more than the limit of 1048576 bytes");
  EXPECT_EQ(decoded.jsonSize, 0u);

  const std::string text = validDocument().dump();
  EXPECT_TRUE(DatasetValidator(text.size()).decode(base64(rawDeflate(text))).valid());
  EXPECT_FALSE(DatasetValidator(text.size() - 1).decode(base64(rawDeflate(text))).valid());
}

}  // namespace
}  // namespace tavrin::sandbox
