#include "DatasetValidator.hpp"

#include "BoundedJson.hpp"
#include "DatasetSchema.hpp"
#include "StopSignal.hpp"
#include "dataset/Element.hpp"

#include <tavrin/codec.hpp>

#include <simdjson.h>
#include <zlib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

namespace tavrin::sandbox {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

// Why a text is not base64 as the client writes it (the codec's strict
// decoding refused it): the first thing wrong, for the message.
std::string base64Problem(std::string_view text) {
  if (text.size() % 4 != 0) {
    return "its length " + std::to_string(text.size()) + " is not a multiple of 4";
  }
  constexpr std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const std::size_t stray = text.substr(0, text.size() - padding).find_first_not_of(alphabet);
  if (stray != std::string_view::npos) {
    return "character " + std::to_string(stray + 1) + " is not in the base64 alphabet";
  }
  return "the bits after the last byte are not zero";
}

// Inflates a raw DEFLATE stream into `text`, refusing to produce more than
// `limit` bytes (described by `limitText` in the problem) and any bytes after
// the end of the stream.
std::optional<std::string> inflateBounded(const std::vector<std::uint8_t>& input, std::size_t limit,
                                          std::string_view limitText, const std::atomic<bool>* stop,
                                          std::string& text) {
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) return "the inflater could not start";
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, inflateEnd);
  // zlib counts in 32 bits; feed the input in pieces that fit, and inflate
  // in steps short enough to look at the stop flag between them.
  constexpr std::size_t piece = std::size_t{1} << 30;
  constexpr std::size_t step = std::size_t{16} << 20;
  std::size_t consumed = 0;
  std::size_t produced = 0;
  // One byte beyond the limit shows that the stream goes on past it; the
  // largest limit saturates instead of wrapping around to 0.
  const std::size_t bound = limit < SIZE_MAX ? limit + 1 : limit;
  const auto tooLarge = [limitText] {
    return "it inflates to more than " + std::string(limitText);
  };
  // Room for four times the input to begin with, doubled whenever it fills.
  const std::size_t initial = std::min(input.size(), bound / 4) * 4;
  text.assign(std::min<std::size_t>(std::max<std::size_t>(initial, 4096), bound), '\0');
  for (;;) {
    if (stream.avail_in == 0 && consumed < input.size()) {
      const std::size_t size = std::min(piece, input.size() - consumed);
      stream.next_in = const_cast<Bytef*>(input.data() + consumed);
      stream.avail_in = static_cast<uInt>(size);
      consumed += size;
    }
    if (produced == text.size()) {
      if (produced >= bound) return tooLarge();
      text.resize(text.size() < bound / 2 ? text.size() * 2 : bound);
    }
    if (stop != nullptr && *stop) throw WorkStopped();
    const std::size_t room = std::min(step, text.size() - produced);
    stream.next_out = reinterpret_cast<Bytef*>(text.data() + produced);
    stream.avail_out = static_cast<uInt>(room);
    const int status = inflate(&stream, Z_NO_FLUSH);
    produced += room - stream.avail_out;
    if (status == Z_STREAM_END) break;
    if (status == Z_BUF_ERROR && stream.avail_in == 0 && consumed == input.size()) {
      return std::string("the DEFLATE stream ends before its last block");
    }
    if (status != Z_OK && status != Z_BUF_ERROR) {
      return std::string("not a raw DEFLATE stream (") + (stream.msg ? stream.msg : "corrupt") +
             ")";
    }
  }
  if (produced > limit) return tooLarge();
  const std::size_t trailing = stream.avail_in + (input.size() - consumed);
  if (trailing != 0) {
    return std::to_string(trailing) + " bytes follow the end of the DEFLATE stream";
  }
  text.resize(produced);
  // The parser reads a little past the end of the text.
  text.reserve(produced + simdjson::SIMDJSON_PADDING);
  return std::nullopt;
}

std::string inQuotes(std::string_view text) {
  constexpr std::size_t shown = 48;
  const bool cut = text.size() > shown;
  return nlohmann::json(std::string(text.substr(0, shown)))
             .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) +
         (cut ? "..." : "");
}

// The parts of a value the checks read; the value was checked to be of that kind.
simdjson::dom::array arrayOf(element value) { return value.get_array().value_unsafe(); }
std::string_view stringOf(element value) { return value.get_string().value_unsafe(); }

// A short description of a value for messages: its JSON type and, for
// scalars, the value itself.
std::string describe(element value) {
  switch (value.type()) {
    case element_type::NULL_VALUE: return "null";
    case element_type::BOOL: return value.get_bool().value_unsafe() ? "true" : "false";
    case element_type::INT64:
    case element_type::UINT64:
    case element_type::DOUBLE: return "number " + simdjson::to_string(value);
    case element_type::STRING: return "string " + inQuotes(stringOf(value));
    case element_type::ARRAY:
      return "a list of " + std::to_string(arrayOf(value).size()) + " values";
    case element_type::OBJECT: return "an object";
  }
  return "a value of another kind";
}

std::string expectation(const Slot& slot) {
  std::string text;
  switch (slot.kind) {
    case Kind::text: text = "string"; break;
    case Kind::boolean: text = "boolean"; break;
    case Kind::integer: text = "integer"; break;
    case Kind::unsignedInteger: text = "unsigned integer"; break;
    case Kind::number: text = "number"; break;
    case Kind::labelCode: text = "label text or category id"; break;
    case Kind::digest: text = "MD5 digest (32 lower-case hexadecimal digits)"; break;
    case Kind::flag: text = "0 or 1"; break;
    case Kind::rows: return "null or a non-empty list of rows";
  }
  return slot.nullable ? text + " or null" : text;
}

bool isDigest(element value) {
  if (!value.is_string()) return false;
  const std::string_view text = stringOf(value);
  return text.size() == 32 && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

// A number without fraction or sign (the parser reads -0 as a signed one).
bool isUnsigned(element value) {
  return value.type() == element_type::UINT64 ||
         (value.type() == element_type::INT64 && value.get_int64().value_unsafe() >= 0);
}

bool fits(const Slot& slot, element value) {
  if (value.is_null()) return slot.nullable;
  switch (slot.kind) {
    case Kind::text: return value.is_string();
    case Kind::boolean: return value.is_bool();
    case Kind::integer: return value.is_int64();
    case Kind::unsignedInteger: return isUnsigned(value);
    case Kind::number: return value.is_number();
    case Kind::labelCode: return value.is_string() || value.is_int64();
    case Kind::digest: return isDigest(value);
    case Kind::flag: return isUnsigned(value) && value.get_uint64().value_unsafe() <= 1;
    case Kind::rows: return false;  // checked by checkRow, which descends into the list
  }
  return false;
}

// Where a value sits: its section, then the row and position numbers that
// lead to it. Cheap to copy; its text is made only for a message.
class Place {
 public:
  explicit Place(std::string_view section) : _section(section) {}

  Place then(const char* label, std::size_t number) const {
    Place next = *this;
    next._steps[next._depth++] = {label, number};
    return next;
  }

  std::string text() const {
    std::string text = "section " + std::string(_section);
    for (std::size_t i = 0; i < _depth; ++i) {
      text += std::string(", ") + _steps[i].first + " " + std::to_string(_steps[i].second);
    }
    return text;
  }

 private:
  std::string_view _section;
  // A contact's nested list is the deepest place: row, position, row, position.
  std::array<std::pair<const char*, std::size_t>, 4> _steps{};
  std::size_t _depth = 0;
};

// The walk over a parsed document, which counts the values of the rows it
// checks against a limit.
class DocumentCheck {
 public:
  explicit DocumentCheck(std::size_t maxValues) : _maxValues(maxValues) {}

  std::optional<std::string> document(element document);

 private:
  std::optional<std::string> section(const SectionShape& shape, element entries);
  std::optional<std::string> entryText(const SectionShape& shape, std::string_view text,
                                       std::size_t index, std::size_t count);
  std::optional<std::string> row(element row, const RowShape& shape, const Place& place);

  std::size_t _maxValues;
  std::size_t _values = 0;
};

std::optional<std::string> DocumentCheck::row(element row, const RowShape& shape,
                                              const Place& place) {
  const std::size_t length = shape.slots.size();
  if (!row.is_array()) {
    return place.text() + ": expected a row of " + std::to_string(length) + " values, got " +
           describe(row);
  }
  const auto values = arrayOf(row);
  if (values.size() != length) {
    return place.text() + ": expected " + std::to_string(length) + " values, got " +
           std::to_string(values.size());
  }
  _values += length;
  if (_values > _maxValues) {
    return "payload: the dataset holds more than " + std::to_string(_maxValues) + " values";
  }
  std::size_t p = 0;
  for (const element value : values) {
    const Slot& slot = shape.slots[p++];
    if (slot.kind == Kind::rows && value.is_array() && arrayOf(value).size() != 0) {
      const Place list = place.then("position", p);
      std::size_t r = 0;
      for (const element nested : arrayOf(value)) {
        if (auto problem = this->row(nested, *slot.rows, list.then("row", ++r))) return problem;
      }
    } else if (!fits(slot, value)) {
      return place.then("position", p).text() + ": expected " + expectation(slot) + ", got " +
             (value.is_array() && arrayOf(value).size() == 0 ? std::string("an empty list")
                                                             : describe(value));
    }
  }
  return std::nullopt;
}

// An entry that is text rather than a row: the access-denied entry or an
// error entry, each allowed only where and how its source may write it.
std::optional<std::string> DocumentCheck::entryText(const SectionShape& shape,
                                                    std::string_view text, std::size_t index,
                                                    std::size_t count) {
  const std::string where =
      "section " + std::string(shape.name) + ", row " + std::to_string(index + 1);
  if (text.starts_with(Element::accessDeniedPrefix)) {
    if (shape.deniedName.empty()) return where + ": this source never reports access denied";
    if (count != 1) return where + ": an access-denied entry must be the only entry";
    const std::string expected =
        std::string(Element::accessDeniedPrefix) + std::string(shape.deniedName);
    if (text != expected) {
      return where + ": expected " + inQuotes(expected) + ", got " + inQuotes(text);
    }
    return std::nullopt;
  }
  switch (shape.failure) {
    case Failure::none: return where + ": this source never reports an error";
    case Failure::alone:
      if (count != 1) return where + ": an error entry must be the only entry";
      return std::nullopt;
    case Failure::afterRows:
      if (index + 1 != count) return where + ": an error entry must be the last entry";
      return std::nullopt;
  }
  return std::nullopt;
}

std::optional<std::string> DocumentCheck::section(const SectionShape& shape, element list) {
  const Place place(shape.name);
  if (shape.flat) return row(list, *shape.shape, place);
  const auto entries = arrayOf(list);
  const std::size_t count = entries.size();
  if (!shape.fixedKeys.empty() && count != shape.fixedKeys.size()) {
    return place.text() + ": expected " + std::to_string(shape.fixedKeys.size()) + " rows, got " +
           std::to_string(count);
  }
  std::size_t i = 0;
  for (const element entry : entries) {
    const std::size_t index = i++;
    if (entry.is_string() && stringOf(entry).starts_with(Element::errorPrefix)) {
      if (auto problem = entryText(shape, stringOf(entry), index, count)) return problem;
      continue;
    }
    const Place rowPlace = place.then("row", index + 1);
    if (auto problem = row(entry, *shape.shape, rowPlace)) return problem;
    if (shape.fixedKeys.empty()) continue;
    const element key = arrayOf(entry).at(0).value_unsafe();
    if (!key.is_string() || stringOf(key) != shape.fixedKeys[index]) {
      return rowPlace.then("position", 1).text() + ": expected " +
             inQuotes(shape.fixedKeys[index]) + ", got " + describe(key);
    }
  }
  return std::nullopt;
}

// The one member of a section object, when the item has that form.
std::optional<simdjson::dom::key_value_pair> sectionMember(element item) {
  if (!item.is_object()) return std::nullopt;
  const auto members = item.get_object().value_unsafe();
  if (members.size() != 1) return std::nullopt;
  return *members.begin();
}

std::optional<std::string> DocumentCheck::document(element document) {
  const auto shapes = datasetSections();
  if (!document.is_array()) {
    return "document: expected a list of " + std::to_string(shapes.size()) + " sections, got " +
           describe(document);
  }
  const auto items = arrayOf(document);
  auto item = items.begin();
  for (std::size_t i = 0; i < shapes.size(); ++i, ++item) {
    const std::string where = "section " + std::to_string(i + 1);
    const std::string expected = inQuotes(shapes[i].name);
    if (item == items.end()) {
      return where + ": expected " + expected + ", but the document ends after " +
             std::to_string(i) + " sections";
    }
    const auto member = sectionMember(*item);
    if (!member) {
      return where + ": expected an object with the one member " + expected + ", got " +
             describe(*item);
    }
    if (member->key != shapes[i].name) {
      return where + ": expected " + expected + ", got " + inQuotes(member->key);
    }
    if (!member->value.is_array()) {
      return "section " + std::string(member->key) + ": expected a list, got " +
             describe(member->value);
    }
    if (auto problem = section(shapes[i], member->value)) return problem;
  }
  if (item != items.end()) {
    const auto member = sectionMember(*item);
    return "section " + std::to_string(shapes.size() + 1) + ": unexpected " +
           (member ? inQuotes(member->key) : describe(*item)) + " after the last section";
  }
  return std::nullopt;
}

// The sections of a document that are one-member objects holding a list, up
// to the first that is not.
std::vector<SectionCount> countSections(element document) {
  std::vector<SectionCount> counts;
  if (!document.is_array()) return counts;
  for (const element item : arrayOf(document)) {
    const auto member = sectionMember(item);
    if (!member || !member->value.is_array()) break;
    const auto entries = arrayOf(member->value);
    SectionCount count{std::string(member->key), entries.size(), {}};
    const auto textStarting = [](element entry, std::string_view prefix) {
      return entry.is_string() && stringOf(entry).starts_with(prefix);
    };
    if (count.entries == 1 && textStarting(*entries.begin(), Element::accessDeniedPrefix)) {
      count.note = "access denied";
    } else if (count.entries != 0 &&
               textStarting(entries.at(count.entries - 1).value_unsafe(), Element::errorPrefix)) {
      count.note = "error";
    }
    counts.push_back(std::move(count));
  }
  return counts;
}

// Why the parser refused the text.
std::string parseProblem(simdjson::error_code error) {
  if (error == simdjson::DEPTH_ERROR) {
    return "payload: the JSON nests deeper than " + std::to_string(DatasetValidator::maxJsonDepth) +
           " levels";
  }
  return std::string("payload: not JSON: ") + simdjson::error_message(error);
}

}  // namespace

std::optional<std::string> DatasetValidator::parse(std::string_view text,
                                                   nlohmann::json& document) const {
  return parseBoundedJson(text, {maxJsonDepth, _maxJsonValues, _stop}, document);
}

DecodedPayload DatasetValidator::check(std::string json) const {
  DecodedPayload result;
  result.jsonSize = json.size();
  json.reserve(json.size() + simdjson::SIMDJSON_PADDING);
  simdjson::dom::parser parser;
  element document;
  if (const auto error = parser.allocate(json.size(), maxJsonDepth); error != simdjson::SUCCESS) {
    result.problem = parseProblem(error);
  } else if (const auto parsed = parser.parse(json.data(), json.size(), false).get(document);
             parsed != simdjson::SUCCESS) {
    result.problem = parseProblem(parsed);
  } else {
    if (_stop != nullptr && *_stop) throw WorkStopped();
    result.sections = countSections(document);
    result.problem = DocumentCheck(_maxJsonValues).document(document);
  }
  result.json = std::move(json);
  return result;
}

DecodedPayload DatasetValidator::decode(std::string_view base64) const {
  DecodedPayload result;
  result.base64Size = base64.size();
  if (base64.empty()) {
    result.problem = "payload: empty";
    return result;
  }
  auto compressed = base64Decode(base64);
  if (!compressed) {
    result.problem = "payload: not base64: " + base64Problem(base64);
    return result;
  }
  const std::size_t deflateSize = compressed->size();
  std::size_t byRatio = 0;
  if (__builtin_mul_overflow(deflateSize, _maxInflationRatio, &byRatio)) byRatio = SIZE_MAX;
  byRatio = std::max(byRatio, inflationFloor);
  const std::size_t limit = std::min(byRatio, _maxJsonSize);
  const std::string limitText = limit == _maxJsonSize
                                    ? "the limit of " + std::to_string(limit) + " bytes"
                                    : std::to_string(limit) + " bytes and " +
                                          std::to_string(_maxInflationRatio) + " times its " +
                                          std::to_string(deflateSize) + " DEFLATE bytes";
  std::string text;
  if (auto problem = inflateBounded(*compressed, limit, limitText, _stop, text)) {
    result.deflateSize = deflateSize;
    result.problem = "payload: " + *problem;
    return result;
  }
  compressed.reset();
  result = check(std::move(text));
  result.base64Size = base64.size();
  result.deflateSize = deflateSize;
  return result;
}

}  // namespace tavrin::sandbox
