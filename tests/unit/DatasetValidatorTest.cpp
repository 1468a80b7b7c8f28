#include "../support/CodecTestData.hpp"

#include "DatasetValidator.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavrin/codec.hpp>

#include <algorithm>
#include <fstream>
#include <string>

namespace tavrin::sandbox {
namespace {

using nlohmann::json;
using testdata::bytesOf;
using testdata::caseName;

json dataFile(const std::string& name) {
  std::ifstream file(TAVRIN_TEST_DATA_DIR "/sandbox/" + name);
  return json::parse(file);
}

json validDocument() { return dataFile("valid-dataset.json"); }

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

// Changes to the valid document, each a JSON patch (sandbox/dataset-changes.json),
// and the verdict on it: "accepted" or the first problem found.
class ChangedDocument : public testing::TestWithParam<json> {};

TEST_P(ChangedDocument, GetsTheVerdictOfItsFirstProblem) {
  const json document = validDocument().patch(GetParam().at("patch"));
  const auto verdict = GetParam().at("verdict").get<std::string>();
  EXPECT_EQ(DatasetValidator().decode(payload(document)).problem.value_or("accepted"), verdict);
}

INSTANTIATE_TEST_SUITE_P(Cases, ChangedDocument,
                         testing::ValuesIn(dataFile("dataset-changes.json")), [](const auto& test) {
                           return test.param.at("name").template get<std::string>();
                         });

struct BadPayload {
  const char* name;
  std::string text;
  std::string problem;  // the start of the expected problem
};

class MalformedPayload : public testing::TestWithParam<BadPayload> {};

TEST_P(MalformedPayload, IsRefusedAtTheRightStageInShortPrintableText) {
  const auto decoded = DatasetValidator().decode(GetParam().text);
  ASSERT_FALSE(decoded.valid());
  EXPECT_EQ(decoded.problem->substr(0, GetParam().problem.size()), GetParam().problem)
      << *decoded.problem;
  // The problem reaches logs and the error document: no raw bytes, no whole tokens.
  EXPECT_EQ(platform::printableExcerpt(*decoded.problem, decoded.problem->size()),
            *decoded.problem);
  EXPECT_LE(decoded.problem->size(), 300u);
}

// Many small objects, in less than 1 MiB (what any payload may inflate to):
// nlohmann's callback parser, whose time grew with the square of their
// number, took 10 s for 40,000 and so over ten minutes for these 340,000,
// far beyond the unit tests' timeout.
std::string manySmallObjects() {
  std::string text = "[";
  for (int i = 0; i < 340000; ++i) text += "{},";
  return text + "0]";
}

INSTANTIATE_TEST_SUITE_P(
    Decoding, MalformedPayload,
    testing::Values(
        BadPayload{"Empty", "", "payload: empty"},
        BadPayload{"LengthNotAMultipleOfFour",
                   "QUJD=", "payload: not base64: its length 5 is not a multiple of 4"},
        BadPayload{"PaddingInside", "QQ==QUJD",
                   "payload: not base64: character 3 is not in the base64 alphabet"},
        BadPayload{"NonZeroTrailingBits",
                   "QR==", "payload: not base64: the bits after the last byte are not zero"},
        BadPayload{"ZlibContainer", base64Encode(*zip(bytesOf("[1,2,3]"))),
                   "payload: not a raw DEFLATE stream ("},
        BadPayload{"Truncated", base64(rawDeflate(validDocument().dump()).substr(0, 400)),
                   "payload: the DEFLATE stream ends before its last block"},
        BadPayload{"TrailingBytes", base64(rawDeflate("[]") + "xyz"),
                   "payload: 3 bytes follow the end of the DEFLATE stream"},
        BadPayload{"NotJson", base64(rawDeflate("{not json")),
                   "payload: not JSON: The JSON document has an improper structure"},
        BadPayload{"NestedTooDeep", base64(rawDeflate(std::string(50, '[') + std::string(50, ']'))),
                   "payload: the JSON nests deeper than 32 levels"},
        BadPayload{"InvalidUtf8", base64(rawDeflate("[\"\xff\xfe\"]")),
                   "payload: not JSON: The input is not valid UTF-8"},
        BadPayload{"HugeNumber", base64(rawDeflate("[" + std::string(100000, '9') + "]")),
                   "payload: not JSON: Problem while parsing a number"},
        // Only the section objects are objects, each with one member.
        BadPayload{"MemberTwice", base64(rawDeflate(R"([{"GeneralInfo":[],"GeneralInfo":[]}])")),
                   R"(section 1: expected an object with the one member "GeneralInfo")"},
        BadPayload{
            "ManySmallObjects", base64(rawDeflate(manySmallObjects())),
            R"(section 1: expected an object with the one member "GeneralInfo", got an object)"}),
    caseName);

TEST(DatasetValidator, StopsAtItsSizeAndValueLimits) {
  // A small payload that inflates far beyond the limit is cut off there.
  const auto bomb =
      DatasetValidator(1u << 20).decode(base64(rawDeflate(std::string(8u << 20, ' '))));
  EXPECT_EQ(bomb.problem.value_or(""),
            "payload: it inflates to more than the limit of 1048576 bytes");
  EXPECT_EQ(bomb.jsonSize, 0u);

  // Nor may it inflate to more than 64 times its DEFLATE bytes, beyond 1 MiB:
  // a hostile payload is refused after a few megabytes, whatever the limit.
  for (const std::size_t spaces : {std::size_t{8} << 20, std::size_t{32} << 20}) {
    const std::string compressed = rawDeflate(std::string(spaces, ' '));
    const auto allowed = std::max<std::size_t>(1u << 20, 64 * compressed.size());
    EXPECT_EQ(DatasetValidator().decode(base64(compressed)).problem.value_or(""),
              "payload: it inflates to more than " + std::to_string(allowed) +
                  " bytes and 64 times its " + std::to_string(compressed.size()) +
                  " DEFLATE bytes");
  }

  const std::string text = validDocument().dump();
  EXPECT_TRUE(DatasetValidator(text.size()).decode(base64(rawDeflate(text))).valid());
  EXPECT_FALSE(DatasetValidator(text.size() - 1).decode(base64(rawDeflate(text))).valid());
  // The largest limit saturates rather than wrapping to 0 (which spun forever).
  EXPECT_TRUE(DatasetValidator(SIZE_MAX).decode(base64(rawDeflate(text))).valid());
  // The values are counted while parsing.
  EXPECT_EQ(DatasetValidator(text.size(), 100).decode(base64(rawDeflate(text))).problem,
            "payload: the dataset holds more than 100 values");
}

}  // namespace
}  // namespace tavrin::sandbox
