#pragma once

#include <nlohmann/json_fwd.hpp>

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin::sandbox {

// What a parse of text from a client may hold. Parsing stops at the first
// value beyond either bound, so neither time nor memory can outgrow them.
struct JsonLimits {
  std::size_t maxDepth;   // arrays and objects nested in one another
  std::size_t maxValues;  // values of every kind, arrays and objects included
  // When given and raised, the parse is abandoned with WorkStopped.
  const std::atomic<bool>* stop = nullptr;
};

// Parses `text` into `document` in one pass whose time is linear in the text's
// size, refusing what strict JSON refuses (including text that is not UTF-8),
// nesting and value counts beyond `limits`, and an object that names one member
// twice. Returns the first problem, in printable text: for example "not JSON:
// parse error at line 1, column 3: ..." or "the JSON nests deeper than 32
// levels"; nothing when `document` holds the parsed text. Throws WorkStopped
// when the limits' stop flag is raised.
std::optional<std::string> parseBoundedJson(std::string_view text, const JsonLimits& limits,
                                            nlohmann::json& document);

}  // namespace tavrin::sandbox
