// How the members whose JSON form differs from their C++ type are read.

#include "platform/profile/ProfileJsonReader.hpp"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace tavrin::platform {

namespace {

// UUID text, 8-4-4-4-12 hexadecimal digits in either case, as bytes.
std::optional<Uuid> parseUuid(std::string_view text) {
  if (text.size() != 36) return {};
  Uuid bytes{};
  std::size_t at = 0;
  for (auto& byte : bytes) {
    if (at == 8 || at == 13 || at == 18 || at == 23) {
      if (text[at++] != '-') return {};
    }
    const char* first = text.data() + at;
    const auto [end, error] = std::from_chars(first, first + 2, byte, 16);
    if (error != std::errc() || end != first + 2) return {};
    at += 2;
  }
  return bytes;
}

// Free-form JSON inside the library's dictionary: any values, each name at
// most once in an object (readers differ in which of two they keep).
const ValueRules& anyValue();

constexpr ContainerRules anyMembers{[](ProfileJsonReader& reader, Frame& frame) {
                                      if (!frame.isArray && !frame.names.insert(frame.key).second) {
                                        reader.fail("duplicate member");
                                      }
                                      return Slot{nullptr, &anyValue()};
                                    },
                                    [](ProfileJsonReader&, Frame&) {}};

const ValueRules& anyValue() {
  static constexpr ValueRules rules{
      [](ProfileJsonReader&, void*, JsonScalar&, bool) {},
      [](ProfileJsonReader& reader, void*, bool) { reader.open(nullptr, anyMembers, false); },
      [](ProfileJsonReader& reader, void*, bool) { reader.open(nullptr, anyMembers, true); }};
  return rules;
}

using Strings = std::map<std::string, std::string>;

// An entry of the dictionary: a text is kept under its name, anything else
// is only checked to be JSON.
constexpr ValueRules bundleEntry{
    [](ProfileJsonReader& reader, void* field, JsonScalar& value, bool) {
      if (std::string* const text = textOf(value)) {
        (*static_cast<Strings*>(field))[reader.innermost().key] = std::move(*text);
      }
    },
    [](ProfileJsonReader& reader, void*, bool) { reader.open(nullptr, anyMembers, false); },
    [](ProfileJsonReader& reader, void*, bool) { reader.open(nullptr, anyMembers, true); }};

constexpr ContainerRules bundleMembers{[](ProfileJsonReader& reader, Frame& frame) {
                                         anyMembers.next(reader, frame);
                                         return Slot{frame.target, &bundleEntry};
                                       },
                                       [](ProfileJsonReader&, Frame&) {}};

// An identifier of a list: a text, kept in the list's one buffer.
constexpr ValueRules listedIdentifier{
    [](ProfileJsonReader& reader, void* field, JsonScalar& value, bool) {
      const std::string* const text = textOf(value);
      if (!text) reader.expected("a string", false);
      static_cast<IdentifierList*>(field)->append(*text);
    },
    [](ProfileJsonReader& reader, void*, bool) { reader.expected("a string", false); },
    [](ProfileJsonReader& reader, void*, bool) { reader.expected("a string", false); }};

constexpr ContainerRules listedIdentifiers{
    [](ProfileJsonReader&, Frame& frame) {
      return Slot{frame.target, &listedIdentifier};
    },
    [](ProfileJsonReader&, Frame& frame) {
      static_cast<IdentifierList*>(frame.target)->shrinkToFit();
    }};

}  // namespace

void Rules<IdentifierList>::array(ProfileJsonReader& reader, IdentifierList& field, bool) {
  reader.open(&field, listedIdentifiers, true);
}

void Rules<FourCharCode<std::uint32_t>>::scalar(ProfileJsonReader& reader, std::uint32_t& field,
                                                JsonScalar& value, bool) {
  if (const std::string* const text = textOf(value)) {
    const bool printable = std::all_of(text->begin(), text->end(), [](char c) {
      return static_cast<unsigned char>(c) >= 0x20 && static_cast<unsigned char>(c) < 0x7F;
    });
    if (text->size() == 4 && printable) {
      field = 0;
      for (const char c : *text) field = (field << 8) | static_cast<unsigned char>(c);
      return;
    }
  } else if (const auto number = exactInteger<std::uint32_t>(value)) {
    field = *number;
    return;
  }
  reader.expected(expected, false);
}

void Rules<UuidText<std::optional<Uuid>>>::scalar(ProfileJsonReader& reader,
                                                  std::optional<Uuid>& field, JsonScalar& value,
                                                  bool) {
  if (std::holds_alternative<std::nullptr_t>(value)) {
    field.reset();
    return;
  }
  const std::string* const text = textOf(value);
  if (!text) reader.expected(expected, false);
  field = parseUuid(*text);
  if (!field) reader.fail(R"(expected UUID text such as "E621E1F8-C36C-495A-93FC-0C247A3E6E5F")");
}

void Rules<MachineText<std::array<std::uint8_t, 256>>>::scalar(ProfileJsonReader& reader,
                                                               std::array<std::uint8_t, 256>& field,
                                                               JsonScalar& value, bool) {
  const std::string* const text = textOf(value);
  if (!text) reader.expected(expected, false);
  // The last byte stays zero: the field is a C string.
  if (text->size() >= field.size()) reader.fail("expected at most 255 bytes");
  field.fill(0);
  std::copy(text->begin(), text->end(), field.begin());
}

void Rules<FrequencyName<Recurrence::Frequency>>::scalar(ProfileJsonReader& reader,
                                                         Recurrence::Frequency& field,
                                                         JsonScalar& value, bool) {
  static constexpr std::pair<std::string_view, Recurrence::Frequency> names[] = {
      {"daily", Recurrence::Frequency::daily},
      {"weekly", Recurrence::Frequency::weekly},
      {"monthly", Recurrence::Frequency::monthly},
      {"yearly", Recurrence::Frequency::yearly}};
  const auto known = std::find_if(std::begin(names), std::end(names), [&](const auto& name) {
    const std::string* const text = textOf(value);
    return text && *text == name.first;
  });
  if (known == std::end(names)) reader.expected(expected, false);
  field = known->second;
}

void Rules<BundleStrings<Strings>>::scalar(ProfileJsonReader& reader, Strings& field,
                                           JsonScalar& value, bool) {
  if (!std::holds_alternative<std::nullptr_t>(value)) reader.expected(expected, false);
  field.clear();
}

void Rules<BundleStrings<Strings>>::object(ProfileJsonReader& reader, Strings& field, bool) {
  reader.open(&field, bundleMembers, false);
}

}  // namespace tavrin::platform
