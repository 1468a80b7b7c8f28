#pragma once

#include "ExchangeLog.hpp"
#include "SandboxStore.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string_view>
#include <vector>

namespace tavrin::sandbox {

// The documents of the dashboard's API under /api/ (docs/sandbox.md shows
// each). Every text a client sent is kept as it came, made valid UTF-8.

// An upload in the list: {"id", "recordNumber", "receivedAt", "accepted",
// "verdict", "sizes": {"base64", "deflate", "json"}}.
nlohmann::json uploadSummary(const StoredUpload& upload);

// An upload with its sections' counts ({"position", "name", "entries", "note"})
// and, when refused, where the problem is (see problemPlace).
nlohmann::json uploadDetail(const StoredUpload& upload);

// Where a verdict's problem sits, from its text ("section Contacts, row 2,
// position 5: expected boolean, got number 1"): {"text", "stage" ("payload"
// or "section"), "section" (a name or a 1-based number), "row", "position"
// (of the section's row, null when absent), "steps" (every [label, number]
// down to a nested value), "expected" (what follows the place)}.
nlohmann::json problemPlace(std::string_view problem);

// The rows `offset` to `offset + limit` of the section at `position`
// (1-based) of a parsed dataset: {"position", "name", "columns", "entries",
// "offset", "rows"}; a flat section ("GeneralInfo", "GeoInfo", "GeneralData")
// is one row. Null when the dataset has no such section.
nlohmann::json sectionRows(const nlohmann::json& dataset, std::size_t position, std::size_t offset,
                           std::size_t limit);

// The exchanges of the log: {"exchanges": [{"sequence", "time", "exchange",
// "status", "milliseconds", "fault", "document", "note"}], "last"}, where
// "last" is the sequence to wait after next.
nlohmann::json exchangesJson(const std::vector<ExchangeEntry>& entries, std::uint64_t after);

}  // namespace tavrin::sandbox
