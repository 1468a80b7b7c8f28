// The documents of the dashboard's API, built from hand-made uploads,
// datasets and exchanges whose neighbouring values all differ.
#include "DashboardJson.hpp"
#include "DatasetColumns.hpp"
#include "DatasetSchema.hpp"

#include <gtest/gtest.h>

#include <future>

namespace tavrin::sandbox {
namespace {

using nlohmann::json;

TEST(DashboardJson, ProblemPlacesAreReadFromTheVerdict) {
  struct Case {
    std::string problem;
    json expected;  // the members of problemPlace() other than "text"
  };
  const json none;
  for (const Case& c : std::vector<Case>{
           {"payload: not base64: character 9 is not in the base64 alphabet",
            {{"stage", "payload"},
             {"section", none},
             {"row", none},
             {"position", none},
             {"steps", json::array()},
             {"expected", "not base64: character 9 is not in the base64 alphabet"}}},
           {R"(section 4: expected "MediaAlbums", got "Video")",
            {{"stage", "section"},
             {"section", 4},
             {"row", none},
             {"position", none},
             {"steps", json::array()},
             {"expected", R"(expected "MediaAlbums", got "Video")"}}},
           {"section Video, row 7: expected 13 values, got 12",
            {{"stage", "section"},
             {"section", "Video"},
             {"row", 7},
             {"position", none},
             {"steps", json::parse(R"([["row", 7]])")},
             {"expected", "expected 13 values, got 12"}}},
           {"section GeoInfo, position 3: expected boolean, got null",
            {{"stage", "section"},
             {"section", "GeoInfo"},
             {"row", none},
             {"position", 3},
             {"steps", json::parse(R"([["position", 3]])")},
             {"expected", "expected boolean, got null"}}},
           {"section Contacts, row 2, position 22, row 5, position 3: expected boolean, got number "
            "1",
            {{"stage", "section"},
             {"section", "Contacts"},
             {"row", 2},
             {"position", 22},
             {"steps",
              json::parse(R"([["row", 2], ["position", 22], ["row", 5], ["position", 3]])")},
             {"expected", "expected boolean, got number 1"}}},
       }) {
    json place = problemPlace(c.problem);
    EXPECT_EQ(place["text"], c.problem);
    place.erase("text");
    EXPECT_EQ(place, c.expected) << c.problem;
  }
}

TEST(DashboardJson, UploadsShowTheirSizesVerdictSectionsAndProblem) {
  StoredUpload upload;
  upload.id = 7;
  upload.recordNumber = "order-\xff";  // not UTF-8, as a client may send it
  upload.receivedAt = "2026-11-24T04:00:00.123Z";
  upload.decoded.base64Size = 300;
  upload.decoded.deflateSize = 200;
  upload.decoded.jsonSize = 1000;
  upload.decoded.sections = {{"GeneralInfo", 9, ""}, {"Contacts", 4, "error"}};
  upload.decoded.problem = "section Contacts, row 3, position 5: expected boolean, got number 1";

  const json summary = uploadSummary(upload);
  // What the client sent that is not UTF-8 is replaced in the document.
  EXPECT_EQ(summary.dump(-1, ' ', false, json::error_handler_t::replace),
            R"({"accepted":false,"id":7,"receivedAt":"2026-11-24T04:00:00.123Z",)"
            R"("recordNumber":"order-)"
            "\xEF\xBF\xBD"
            R"(","sizes":{"base64":300,"deflate":200,"json":1000},)"
            R"("verdict":"section Contacts, row 3, position 5: expected boolean, got number 1"})");

  const json detail = uploadDetail(upload);
  EXPECT_EQ(detail["sections"], json::parse(R"([
      {"position": 1, "name": "GeneralInfo", "entries": 9, "note": ""},
      {"position": 2, "name": "Contacts", "entries": 4, "note": "error"}])"));
  EXPECT_EQ(detail["problem"]["row"], 3);
  EXPECT_EQ(detail["problem"]["position"], 5);

  upload.accepted = true;
  upload.decoded.problem.reset();
  EXPECT_EQ(uploadSummary(upload)["verdict"], "valid");
  EXPECT_TRUE(uploadDetail(upload)["problem"].is_null());
}

TEST(DashboardJson, SectionRowsArePagedAndNamedByTheRowLayout) {
  const json dataset = json::parse(R"([
      {"GeneralInfo": [8, 1, 1.5, 2.5, "iPhone", "iPhone12,1", "17.2", null, "sdk"]},
      {"Contacts": [["c1"], ["c2"], ["c3"], ["c4"]]},
      {"ContactGroups": ["EXTRACTING ERROR : Access denied ContactGroups"]},
      "not a section"])");
  struct Case {
    std::size_t position, offset, limit;
    json expected;  // name, entries, rows; null when there is no such section
  };
  for (const Case& c : std::vector<Case>{
           {1, 0, 100, {"GeneralInfo", 1, {dataset[0]["GeneralInfo"]}}},
           {2, 1, 2, {"Contacts", 4, {{"c2"}, {"c3"}}}},
           {2, 3, 100, {"Contacts", 4, {{"c4"}}}},
           {2, 9, 100, {"Contacts", 4, json::array()}},
           {3, 0, 100, {"ContactGroups", 1, {"EXTRACTING ERROR : Access denied ContactGroups"}}},
           {4, 0, 100, {"", 1, {"not a section"}}},
           {5, 0, 100, nullptr},
           {0, 0, 100, nullptr},
       }) {
    const json rows = sectionRows(dataset, c.position, c.offset, c.limit);
    if (c.expected.is_null()) {
      EXPECT_TRUE(rows.is_null()) << c.position;
      continue;
    }
    EXPECT_EQ(json::array({rows["name"], rows["entries"], rows["rows"]}), c.expected)
        << c.position << " from " << c.offset;
    EXPECT_EQ(rows["position"], c.position);
    EXPECT_EQ(rows["offset"], c.offset);
  }
  EXPECT_EQ(sectionRows(dataset, 1, 0, 1)["columns"][7], "deviceId");
  EXPECT_EQ(sectionRows(dataset, 2, 0, 1)["columns"][26], "instantMessageAddresses");
}

TEST(DashboardJson, EverySectionNamesEachPositionOfItsRows) {
  for (const SectionShape& section : datasetSections()) {
    EXPECT_EQ(datasetColumns(section.name).size(), section.shape->slots.size()) << section.name;
  }
  EXPECT_TRUE(datasetColumns("Unknown").empty());
}

TEST(DashboardJson, ExchangesCarryStatusFaultAndTheDocumentSent) {
  ExchangeLog log(2);
  log.add({.exchange = Exchange::login,
           .status = 200,
           .milliseconds = 1.5,
           .document = R"({"token_type":"Bearer"})",
           .note = "token issued"});
  log.add({.exchange = Exchange::check,
           .status = 503,
           .milliseconds = 2.5,
           .fault = "check:status=503",
           .note = "fault check:status=503"});
  log.add({.exchange = Exchange::upload,
           .milliseconds = 3.5,
           .fault = "upload:drop",
           .document = "not json",
           .note = "fault upload:drop"});
  // The log keeps its last two: the login has left it.
  json exchanges = exchangesJson(log.after(0, ExchangeLog::Clock::now()), 0);
  EXPECT_EQ(exchanges["last"], 3);
  for (auto& entry : exchanges["exchanges"]) {
    EXPECT_EQ(entry["time"].get<std::string>().size(), 24U);
    entry.erase("time");
  }
  EXPECT_EQ(exchanges["exchanges"], json::parse(R"([
      {"sequence": 2, "exchange": "check", "status": 503, "milliseconds": 2.5,
       "fault": "check:status=503", "document": null, "note": "fault check:status=503"},
      {"sequence": 3, "exchange": "upload", "status": null, "milliseconds": 3.5,
       "fault": "upload:drop", "document": "not json", "note": "fault upload:drop"}])"));
  EXPECT_EQ(exchangesJson({}, 3)["last"], 3);

  // A reader waiting after the last entry wakes for the next one, and close()
  // ends every wait at once.
  const auto far = ExchangeLog::Clock::now() + std::chrono::hours(1);
  auto waiting = std::async(std::launch::async, [&] { return log.after(3, far); });
  log.add({.exchange = Exchange::login, .status = 401});
  const auto woken = waiting.get();
  ASSERT_EQ(woken.size(), 1U);
  EXPECT_EQ(woken[0].sequence, 4U);
  log.close();
  EXPECT_TRUE(log.after(4, far).empty());
}

}  // namespace
}  // namespace tavrin::sandbox
