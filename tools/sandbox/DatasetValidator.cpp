#include "DatasetValidator.hpp"

#include "BoundedJson.hpp"
#include "DatasetSchema.hpp"
#include "StopSignal.hpp"
#include "dataset/Element.hpp"

#include <tavrin/codec.hpp>

#include <zlib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <limits>
#include <memory>

namespace tavrin::sandbox {

namespace {

using nlohmann::json;

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
// `limit` bytes and any bytes after the end of the stream.
std::optional<std::string> inflateBounded(const std::vector<std::uint8_t>& input, std::size_t limit,
                                          const std::atomic<bool>* stop, std::string& text) {
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
  const auto tooLarge = [limit] {
    return "it inflates to more than the limit of " + std::to_string(limit) + " bytes";
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
  return std::nullopt;
}

std::string inQuotes(std::string_view text) {
  constexpr std::size_t shown = 48;
  const bool cut = text.size() > shown;
  return json(std::string(text.substr(0, shown)))
             .dump(-1, ' ', false, json::error_handler_t::replace) +
         (cut ? "..." : "");
}

// A short description of a value for messages: its JSON type and, for
// scalars, the value itself.
std::string describe(const json& value) {
  switch (value.type()) {
    case json::value_t::null: return "null";
    case json::value_t::boolean: return value.get<bool>() ? "true" : "false";
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
    case json::value_t::number_float: return "number " + value.dump();
    case json::value_t::string: return "string " + inQuotes(value.get_ref<const std::string&>());
    case json::value_t::array: return "a list of " + std::to_string(value.size()) + " values";
    case json::value_t::object: return "an object";
    default: return "a value of another kind";
  }
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

bool isSignedInteger(const json& value) {
  return value.is_number_integer() &&
         (!value.is_number_unsigned() ||
          value.get<std::uint64_t>() <= std::uint64_t{std::numeric_limits<std::int64_t>::max()});
}

bool isDigest(const json& value) {
  if (!value.is_string()) return false;
  const auto& text = value.get_ref<const std::string&>();
  return text.size() == 32 && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

bool fits(const Slot& slot, const json& value) {
  if (value.is_null()) return slot.nullable;
  switch (slot.kind) {
    case Kind::text: return value.is_string();
    case Kind::boolean: return value.is_boolean();
    case Kind::integer: return isSignedInteger(value);
    case Kind::unsignedInteger: return value.is_number_unsigned();
    case Kind::number: return value.is_number();
    case Kind::labelCode: return value.is_string() || isSignedInteger(value);
    case Kind::digest: return isDigest(value);
    case Kind::flag: return value.is_number_unsigned() && value.get<std::uint64_t>() <= 1;
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

std::optional<std::string> checkRow(const json& row, const RowShape& shape, const Place& place) {
  const std::size_t length = shape.slots.size();
  if (!row.is_array()) {
    return place.text() + ": expected a row of " + std::to_string(length) + " values, got " +
           describe(row);
  }
  if (row.size() != length) {
    return place.text() + ": expected " + std::to_string(length) + " values, got " +
           std::to_string(row.size());
  }
  for (std::size_t p = 0; p < length; ++p) {
    const Slot& slot = shape.slots[p];
    const json& value = row[p];
    if (slot.kind == Kind::rows && value.is_array() && !value.empty()) {
      const Place list = place.then("position", p + 1);
      for (std::size_t r = 0; r < value.size(); ++r) {
        if (auto problem = checkRow(value[r], *slot.rows, list.then("row", r + 1))) return problem;
      }
    } else if (!fits(slot, value)) {
      return place.then("position", p + 1).text() + ": expected " + expectation(slot) + ", got " +
             (value.is_array() && value.empty() ? std::string("an empty list") : describe(value));
    }
  }
  return std::nullopt;
}

bool startsWith(const json& value, std::string_view prefix) {
  return value.is_string() && value.get_ref<const std::string&>().starts_with(prefix);
}

// An entry that is text rather than a row: the access-denied entry or an
// error entry, each allowed only where and how its source may write it.
std::optional<std::string> checkEntryText(const SectionShape& section, const json& entries,
                                          std::size_t index) {
  const std::string where =
      "section " + std::string(section.name) + ", row " + std::to_string(index + 1);
  const auto& text = entries[index].get_ref<const std::string&>();
  if (text.starts_with(Element::accessDeniedPrefix)) {
    if (section.deniedName.empty()) return where + ": this source never reports access denied";
    if (entries.size() != 1) return where + ": an access-denied entry must be the only entry";
    const std::string expected =
        std::string(Element::accessDeniedPrefix) + std::string(section.deniedName);
    if (text != expected)
      return where + ": expected " + inQuotes(expected) + ", got " + inQuotes(text);
    return std::nullopt;
  }
  switch (section.failure) {
    case Failure::none: return where + ": this source never reports an error";
    case Failure::alone:
      if (entries.size() != 1) return where + ": an error entry must be the only entry";
      return std::nullopt;
    case Failure::afterRows:
      if (index + 1 != entries.size()) return where + ": an error entry must be the last entry";
      return std::nullopt;
  }
  return std::nullopt;
}

std::optional<std::string> checkSection(const SectionShape& section, const json& entries) {
  const Place place(section.name);
  if (section.flat) return checkRow(entries, *section.shape, place);
  if (!section.fixedKeys.empty() && entries.size() != section.fixedKeys.size()) {
    return place.text() + ": expected " + std::to_string(section.fixedKeys.size()) + " rows, got " +
           std::to_string(entries.size());
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (startsWith(entries[i], Element::errorPrefix)) {
      if (auto problem = checkEntryText(section, entries, i)) return problem;
      continue;
    }
    const Place row = place.then("row", i + 1);
    if (auto problem = checkRow(entries[i], *section.shape, row)) return problem;
    if (!section.fixedKeys.empty() && entries[i][0] != section.fixedKeys[i]) {
      return row.then("position", 1).text() + ": expected " + inQuotes(section.fixedKeys[i]) +
             ", got " + describe(entries[i][0]);
    }
  }
  return std::nullopt;
}

// The one member of a section object, when the item has that form.
const json::object_t::value_type* sectionMember(const json& item) {
  if (!item.is_object() || item.size() != 1) return nullptr;
  return &*item.get_ref<const json::object_t&>().begin();
}

}  // namespace

std::optional<std::string> DatasetValidator::validate(const json& document) {
  const auto sections = datasetSections();
  if (!document.is_array()) {
    return "document: expected a list of " + std::to_string(sections.size()) + " sections, got " +
           describe(document);
  }
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const std::string where = "section " + std::to_string(i + 1);
    const std::string expected = inQuotes(sections[i].name);
    if (i >= document.size()) {
      return where + ": expected " + expected + ", but the document ends after " +
             std::to_string(document.size()) + " sections";
    }
    const auto* member = sectionMember(document[i]);
    if (member == nullptr) {
      return where + ": expected an object with the one member " + expected + ", got " +
             describe(document[i]);
    }
    if (member->first != sections[i].name) {
      return where + ": expected " + expected + ", got " + inQuotes(member->first);
    }
    if (!member->second.is_array()) {
      return "section " + member->first + ": expected a list, got " + describe(member->second);
    }
    if (auto problem = checkSection(sections[i], member->second)) return problem;
  }
  if (document.size() > sections.size()) {
    const auto* member = sectionMember(document[sections.size()]);
    return "section " + std::to_string(sections.size() + 1) + ": unexpected " +
           (member ? inQuotes(member->first) : describe(document[sections.size()])) +
           " after the last section";
  }
  return std::nullopt;
}

std::vector<SectionCount> DatasetValidator::countSections(const json& document) {
  std::vector<SectionCount> counts;
  if (!document.is_array()) return counts;
  for (const json& item : document) {
    const auto* member = sectionMember(item);
    if (member == nullptr || !member->second.is_array()) break;
    const json& entries = member->second;
    SectionCount count{member->first, entries.size(), {}};
    if (entries.size() == 1 && startsWith(entries[0], Element::accessDeniedPrefix)) {
      count.note = "access denied";
    } else if (!entries.empty() && startsWith(entries.back(), Element::errorPrefix)) {
      count.note = "error";
    }
    counts.push_back(std::move(count));
  }
  return counts;
}

std::optional<std::string> DatasetValidator::parse(std::string_view text, json& document) const {
  return parseBoundedJson(text, {maxJsonDepth, _maxJsonValues, _stop}, document);
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
  result.deflateSize = compressed->size();
  std::string text;
  if (auto problem = inflateBounded(*compressed, _maxJsonSize, _stop, text)) {
    result.problem = "payload: " + *problem;
    return result;
  }
  compressed.reset();
  result.jsonSize = text.size();
  json document;
  if (auto problem = parse(text, document)) result.problem = "payload: " + *problem;
  result.json = std::move(text);
  if (result.problem) return result;
  result.sections = countSections(document);
  result.problem = validate(document);
  return result;
}

}  // namespace tavrin::sandbox
