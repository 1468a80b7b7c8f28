#pragma once

#include <nlohmann/json_fwd.hpp>

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
// size bound, JSON) and checks its structure against the row tables of every
// section. The first problem is named by its place, for example
// "section Contacts, row 2, position 5: expected boolean, got number 1".
// Stateless and safe to share between threads.
class DatasetValidator {
 public:
  // The inflated JSON may be at most this large; a payload that inflates
  // beyond it is refused without inflating the rest.
  static constexpr std::size_t defaultMaxJsonSize = std::size_t{256} << 20;

  explicit DatasetValidator(std::size_t maxJsonSize = defaultMaxJsonSize)
      : _maxJsonSize(maxJsonSize) {}

  // Decodes and checks one payload. Never throws for malformed input.
  DecodedPayload decode(std::string_view base64) const;

  // Checks the structure of a parsed document; absent when it is a valid dataset.
  static std::optional<std::string> validate(const nlohmann::json& document);

  // The sections of a parsed document that are one-member objects holding an array.
  static std::vector<SectionCount> countSections(const nlohmann::json& document);

 private:
  std::size_t _maxJsonSize;
};

}  // namespace tavrin::sandbox
