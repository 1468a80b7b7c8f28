#include "DashboardJson.hpp"

#include "DatasetColumns.hpp"
#include "DatasetSchema.hpp"

#include <algorithm>
#include <charconv>

namespace tavrin::sandbox {

namespace {

using nlohmann::json;

// A number in the text of a place, or nothing when there is none.
std::optional<std::size_t> numberIn(std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// The JSON an answer's body holds; the text itself when it is not JSON.
json document(const std::string& body) {
  if (body.empty()) return nullptr;
  json parsed = json::parse(body, nullptr, false);
  return parsed.is_discarded() ? json(body) : parsed;
}

}  // namespace

json uploadSummary(const StoredUpload& upload) {
  const auto& decoded = upload.decoded;
  return {{"id", upload.id},
          {"recordNumber", upload.recordNumber},
          {"receivedAt", upload.receivedAt},
          {"accepted", upload.accepted},
          {"verdict", decoded.problem.value_or("valid")},
          {"sizes",
           {{"base64", decoded.base64Size},
            {"deflate", decoded.deflateSize},
            {"json", decoded.jsonSize}}}};
}

json uploadDetail(const StoredUpload& upload) {
  json detail = uploadSummary(upload);
  json sections = json::array();
  for (std::size_t i = 0; i < upload.decoded.sections.size(); ++i) {
    const auto& section = upload.decoded.sections[i];
    sections.push_back({{"position", i + 1},
                        {"name", section.name},
                        {"entries", section.entries},
                        {"note", section.note}});
  }
  detail["sections"] = std::move(sections);
  detail["problem"] = upload.decoded.problem ? problemPlace(*upload.decoded.problem) : json();
  return detail;
}

json problemPlace(std::string_view problem) {
  json place = {{"text", problem},    {"stage", "payload"},  {"section", nullptr},
                {"row", nullptr},     {"position", nullptr}, {"steps", json::array()},
                {"expected", problem}};
  constexpr std::string_view sectionPrefix = "section ";
  const auto colon = problem.find(": ");
  if (!problem.starts_with(sectionPrefix) || colon == std::string_view::npos) {
    if (colon != std::string_view::npos) place["expected"] = problem.substr(colon + 2);
    return place;
  }
  place["stage"] = "section";
  place["expected"] = problem.substr(colon + 2);
  // The place is the section, then ", LABEL NUMBER" steps down to the value.
  std::string_view where = problem.substr(sectionPrefix.size(), colon - sectionPrefix.size());
  for (bool first = true; !where.empty(); first = false) {
    const auto comma = where.find(", ");
    const std::string_view part = where.substr(0, comma);
    where = comma == std::string_view::npos ? std::string_view() : where.substr(comma + 2);
    if (first) {
      const auto number = numberIn(part);
      place["section"] = number ? json(*number) : json(part);
      continue;
    }
    const auto space = part.find(' ');
    const auto number =
        space == std::string_view::npos ? std::nullopt : numberIn(part.substr(space + 1));
    if (!number) break;
    const std::string label(part.substr(0, space));
    place["steps"].push_back({label, *number});
    if ((label == "row" || label == "position") && place[label].is_null()) place[label] = *number;
  }
  return place;
}

json sectionRows(const json& dataset, std::size_t position, std::size_t offset, std::size_t limit) {
  if (!dataset.is_array() || position == 0 || position > dataset.size()) return nullptr;
  const json& member = dataset[position - 1];
  std::string name;
  json entries = json::array({member});
  if (member.is_object() && member.size() == 1) {
    name = member.begin().key();
    entries = member.begin().value();
  }
  const auto shapes = datasetSections();
  const bool flat =
      position <= shapes.size() && shapes[position - 1].flat && shapes[position - 1].name == name;
  if (flat || !entries.is_array()) entries = json::array({entries});
  json rows = json::array();
  for (std::size_t i = offset; i < entries.size() && i - offset < limit; ++i) {
    rows.push_back(entries[i]);
  }
  const auto columns = datasetColumns(name);
  return {{"position", position},
          {"name", name},
          {"columns", json(std::vector<std::string>(columns.begin(), columns.end()))},
          {"entries", entries.size()},
          {"offset", offset},
          {"rows", std::move(rows)}};
}

json exchangesJson(const std::vector<ExchangeEntry>& entries, std::uint64_t after) {
  json list = json::array();
  for (const auto& entry : entries) {
    list.push_back({{"sequence", entry.sequence},
                    {"time", entry.time},
                    {"exchange", exchangeName(entry.exchange)},
                    {"status", entry.status ? json(*entry.status) : json()},
                    {"milliseconds", entry.milliseconds},
                    {"fault", entry.fault.empty() ? json() : json(entry.fault)},
                    {"document", document(entry.document)},
                    {"note", entry.note}});
  }
  return {{"exchanges", std::move(list)},
          {"last", entries.empty() ? after : entries.back().sequence}};
}

}  // namespace tavrin::sandbox
