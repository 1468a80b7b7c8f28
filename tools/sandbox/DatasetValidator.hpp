#pragma once

#include <nlohmann/json_fwd.hpp>

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::sandbox {

// The number of entries of one section as it arrived, and what they are.
struct SectionCount {
  std::string name;
  std::size_t entries = 0;
  // "" for rows or values, "access denied", or "error" when the last entry is
  // an error entry.
  std::string note;
};

// Everything one decoding of an uploaded payload learned about it.
struct DecodedPayload {
  std::size_t base64Size = 0;
  std::size_t deflateSize = 0;         // 0 when the text is not base64
  std::size_t jsonSize = 0;            // 0 when the bytes do not inflate
  std::string json;                    // the inflated text, when inflating succeeded
  std::vector<SectionCount> sections;  // the sections that could be read, in order
  std::optional<std::string> problem;  // the first problem found; absent when valid

  bool valid() const { return !problem.has_value(); }
};

// Decodes an uploaded dataset (strict base64, raw DEFLATE inflated within a
// size bound, JSON parsed by simdjson at the speed of memory) and checks its
// structure against the row tables of every section. The first problem is
// named by its place, for example "section Contacts, row 2, position 5:
// expected boolean, got number 1". Stateless and safe to share between threads.
class DatasetValidator {
 public:
  // The inflated JSON may be at most this large; a payload that inflates
  // beyond it is refused without inflating the rest. A 200,000-contact phone's
  // dataset takes 91 MB; parsing takes up to ten times the JSON's size.
  static constexpr std::size_t defaultMaxJsonSize = std::size_t{128} << 20;
  // The rows of the dataset may hold at most this many values (a
  // 200,000-contact phone's dataset holds about 10 million).
  static constexpr std::size_t defaultMaxJsonValues = std::size_t{16} << 20;
  // A payload may also inflate to at most this many times its DEFLATE bytes
  // (or to inflationFloor, when that is more), so that a small hostile
  // payload is refused after a few megabytes. Datasets inflate about 3.4
  // times, since their digests and identifiers do not compress (8 times for
  // a phone of 100,000 contacts holding nothing but identifiers); repeated
  // text inflates a thousand times.
  static constexpr std::size_t defaultMaxInflationRatio = 64;
  static constexpr std::size_t inflationFloor = std::size_t{1} << 20;
  // A dataset nests six levels deep (document, section, values, row, list,
  // nested row); anything deeper than this is refused while parsing.
  static constexpr std::size_t maxJsonDepth = 32;

  // When `stop` is given, decoding watches it and gives up once it is raised.
  explicit DatasetValidator(std::size_t maxJsonSize = defaultMaxJsonSize,
                            std::size_t maxJsonValues = defaultMaxJsonValues,
                            std::size_t maxInflationRatio = defaultMaxInflationRatio,
                            const std::atomic<bool>* stop = nullptr)
      : _maxJsonSize(maxJsonSize),
        _maxJsonValues(maxJsonValues),
        _maxInflationRatio(maxInflationRatio),
        _stop(stop) {}

  // Decodes and checks one payload, in time linear in its size. Never throws
  // for malformed input; throws WorkStopped once the stop flag is raised.
  DecodedPayload decode(std::string_view base64) const;

  // Checks the JSON text of a dataset, the last step of decode(): its
  // sections and verdict (the base64 and DEFLATE sizes are left at 0).
  DecodedPayload check(std::string json) const;

  // Parses dataset JSON into a document within the validator's limits, for
  // showing it; the problem when the text is not JSON or exceeds them.
  std::optional<std::string> parse(std::string_view json, nlohmann::json& document) const;

 private:
  std::size_t _maxJsonSize;
  std::size_t _maxJsonValues;
  std::size_t _maxInflationRatio;
  const std::atomic<bool>* _stop;
};

}  // namespace tavrin::sandbox
