#pragma once

#include "platform/profile/ProfileFields.hpp"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

namespace tavrin::platform {

// What one read of a profile, or of one part of a profile, may hold. Going
// past any of them fails the read with a DeviceProfileError; together they
// bound the memory and time a hostile text can cost.
struct ProfileLimits {
  std::size_t bytes = std::size_t{256} << 20;  // the text's size
  std::size_t depth = 32;                      // objects and lists inside one another
  std::size_t values = 16'000'000;             // values of every kind, containers included
  std::size_t containers = 2'000'000;          // objects and lists
  // The events and occurrences one event query can return, each recurring
  // event counted at the most occurrences one query can hold.
  std::uint64_t eventRows = 250'000;
};

// The text of a profile, in pieces: each call returns the next piece, and an
// empty one at the end. A piece stays valid until the next call.
using ProfileText = std::function<std::string_view()>;

// A scalar as the JSON parser delivers it. A text is the parser's own
// buffer, free to be moved from.
using JsonScalar =
    std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string*>;

// The text a scalar holds, or null.
inline std::string* textOf(JsonScalar& value) {
  auto* const text = std::get_if<std::string*>(&value);
  return text ? *text : nullptr;
}
// The number a scalar holds, if it holds one.
std::optional<double> numberOf(const JsonScalar& value);

class ProfileJsonReader;

// How values of one C++ type are read: a scalar, or the opening of an object
// or list. `orNull` says whether null was also allowed there, for the error.
struct ValueRules {
  void (*scalar)(ProfileJsonReader&, void* field, JsonScalar& value, bool orNull);
  void (*object)(ProfileJsonReader&, void* field, bool orNull);
  void (*array)(ProfileJsonReader&, void* field, bool orNull);
};

// Where the next value goes, and how it is read.
struct Slot {
  void* field = nullptr;
  const ValueRules* rules = nullptr;
};

struct Frame;

// How the members or elements of one kind of object or list are read.
struct ContainerRules {
  // The slot of the member named frame.key, or of the next element.
  Slot (*next)(ProfileJsonReader&, Frame&);
  // Called when the object or list closes.
  void (*close)(ProfileJsonReader&, Frame&);
};

// An object or list being read.
struct Frame {
  const ContainerRules* rules = nullptr;
  void* target = nullptr;
  bool isArray = false;
  std::size_t elements = 0;               // lists: elements begun so far
  std::string key;                        // objects: the member being read
  std::vector<bool> given;                // described objects: members given, by position
  std::unordered_set<std::string> names;  // other objects: members given
};

// Reads JSON text into typed values as the parser goes, without a document in
// between, so time and memory grow linearly with the text. Each failure is a
// DeviceProfileError with the JSON pointer of the value at fault, and, for
// text that is not JSON, its line and column.
class ProfileJsonReader {
 public:
  // `at` is the pointer of the value read within the whole profile: "" for
  // the profile itself, "/contacts" for its member read on its own.
  ProfileJsonReader(const std::string& file, const ProfileLimits& limits, std::string at = {});

  // Reads the whole text into `root`.
  void read(const ProfileText& text, Slot root);

  // Opens an object (`members` known ones, or 0 for free-form ones) or a list.
  void open(void* target, const ContainerRules& rules, bool isArray, std::size_t members = 0);
  Frame& innermost() { return _frames[_depth - 1]; }

  // Fail at the value being read.
  [[noreturn]] void fail(const std::string& reason) const;
  [[noreturn]] void expected(std::string_view what, bool orNull) const;
  // Fail at the member `name` of the innermost object.
  [[noreturn]] void failAtMember(std::string_view name, const std::string& reason);

  // The events of the JSON parser.
  void scalar(JsonScalar& value);
  void beginObject();
  void key(std::string& name);
  void beginArray();
  void end();
  [[noreturn]] void syntaxError(std::size_t byte, const std::string& message, bool inValue);

 private:
  Slot next();
  void count(bool container);
  // The pointer made of the first `frames` frames' current members.
  std::string pointer(std::size_t frames) const;

  const std::string& _file;
  const ProfileLimits& _limits;
  const std::string _at;
  std::vector<Frame> _frames;  // reused as the reader goes deeper and back
  std::size_t _depth = 0;
  std::size_t _values = 0, _containers = 0;
  Slot _root;
};

// Fails with the error a text larger than the limits allow gets.
[[noreturn]] void failTooLarge(const std::string& file, const ProfileLimits& limits);

// Appends a member name to a JSON pointer as one token ("~" and "/" escaped).
void appendPointerToken(std::string& pointer, std::string_view name);

// The checks beyond each member's own type, made when an object of these
// types closes. They may derive fields (systemVersionParts).
void checkProfileObject(ProfileDevice& device, ProfileJsonReader& reader);
void checkProfileObject(const ProfileContacts& contacts, ProfileJsonReader& reader);
void checkProfileObject(const Recurrence& recurrence, ProfileJsonReader& reader);
void checkProfileObject(const ProfileEvent& event, ProfileJsonReader& reader);
void checkProfileObject(const RandomSetting& random, ProfileJsonReader& reader);

// The rules of each type -------------------------------------------------

// The field a member of type T (a codec or the field itself) is stored in.
template <typename T>
auto fieldOfMember() {
  if constexpr (ProfileCodec<T>) {
    return std::type_identity<std::remove_reference_t<decltype(std::declval<T>().value)>>();
  } else {
    return std::type_identity<T>();
  }
}

// Rules<T>: `expected` names what T takes; `scalar`, `object` and `array`,
// where T takes them, read into the field. The specializations follow.
template <typename T>
struct Rules;

template <typename T>
const ValueRules& rulesOf() {
  using Field = typename decltype(fieldOfMember<T>())::type;
  static constexpr ValueRules rules{
      [](ProfileJsonReader& reader, void* field, JsonScalar& value, bool orNull) {
        if constexpr (requires(Field & f) { Rules<T>::scalar(reader, f, value, orNull); }) {
          Rules<T>::scalar(reader, *static_cast<Field*>(field), value, orNull);
        } else {
          reader.expected(Rules<T>::expected, orNull);
        }
      },
      [](ProfileJsonReader& reader, void* field, bool orNull) {
        if constexpr (requires(Field & f) { Rules<T>::object(reader, f, orNull); }) {
          Rules<T>::object(reader, *static_cast<Field*>(field), orNull);
        } else {
          reader.expected(Rules<T>::expected, orNull);
        }
      },
      [](ProfileJsonReader& reader, void* field, bool orNull) {
        if constexpr (requires(Field & f) { Rules<T>::array(reader, f, orNull); }) {
          Rules<T>::array(reader, *static_cast<Field*>(field), orNull);
        } else {
          reader.expected(Rules<T>::expected, orNull);
        }
      }};
  return rules;
}

template <typename T>
requires(!ProfileCodec<T>) Slot slotOf(T& field) { return {&field, &rulesOf<T>()}; }
// A codec reads into the field it wraps.
template <ProfileCodec T>
Slot slotOf(const T& codec) {
  return {&codec.value, &rulesOf<T>()};
}

// The integer of a JSON number when it is one exactly: an integer literal, or
// a number with no fraction, within the range of I.
template <std::integral I>
std::optional<I> exactInteger(const JsonScalar& value) {
  constexpr double twoTo63 = 9223372036854775808.0;
  const auto within = [](auto exact) -> std::optional<I> {
    if (!std::in_range<I>(exact)) return {};
    return static_cast<I>(exact);
  };
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return within(*integer);
  if (const auto* integer = std::get_if<std::uint64_t>(&value)) return within(*integer);
  const auto* number = std::get_if<double>(&value);
  if (!number || *number != std::trunc(*number)) return {};
  if (*number >= -twoTo63 && *number < twoTo63) return within(static_cast<std::int64_t>(*number));
  if (*number >= 0 && *number < 2 * twoTo63) return within(static_cast<std::uint64_t>(*number));
  return {};
}

template <>
struct Rules<std::string> {
  static constexpr std::string_view expected = "a string";
  static void scalar(ProfileJsonReader& reader, std::string& field, JsonScalar& value, bool orNull);
};
template <>
struct Rules<bool> {
  static constexpr std::string_view expected = "a boolean";
  static void scalar(ProfileJsonReader& reader, bool& field, JsonScalar& value, bool orNull);
};
template <>
struct Rules<double> {
  static constexpr std::string_view expected = "a number";
  static void scalar(ProfileJsonReader& reader, double& field, JsonScalar& value, bool orNull);
};
template <>
struct Rules<float> {
  static constexpr std::string_view expected = "a number";
  static void scalar(ProfileJsonReader& reader, float& field, JsonScalar& value, bool orNull);
};

template <std::integral I>
requires(!std::same_as<I, bool>) struct Rules<I> {
  static constexpr std::string_view expected = "an integer";
  static void scalar(ProfileJsonReader& reader, I& field, JsonScalar& value, bool orNull) {
    if (!numberOf(value)) reader.expected(expected, orNull);
    const auto exact = exactInteger<I>(value);
    if (!exact) {
      using Limits = std::numeric_limits<I>;
      reader.expected("an integer from " + std::to_string(Limits::min()) + " to " +
                          std::to_string(Limits::max()),
                      orNull);
    }
    field = *exact;
  }
};

// An optional field: null is absent; anything else is read as T.
template <typename T>
struct Rules<std::optional<T>> {
  static constexpr std::string_view expected = Rules<T>::expected;
  static void scalar(ProfileJsonReader& reader, std::optional<T>& field, JsonScalar& value, bool) {
    if (std::holds_alternative<std::nullptr_t>(value)) {
      field.reset();
    } else {
      rulesOf<T>().scalar(reader, &field.emplace(), value, true);
    }
  }
  static void object(ProfileJsonReader& reader, std::optional<T>& field, bool) {
    rulesOf<T>().object(reader, &field.emplace(), true);
  }
  static void array(ProfileJsonReader& reader, std::optional<T>& field, bool) {
    rulesOf<T>().array(reader, &field.emplace(), true);
  }
};

// A list: every element is read as T, with its index in the pointer.
template <typename T>
struct Rules<std::vector<T>> {
  static constexpr std::string_view expected = "an array";
  static constexpr std::size_t spareBytes = std::size_t{64} << 10;
  static constexpr ContainerRules elements{
      [](ProfileJsonReader&, Frame& frame) {
        auto& list = *static_cast<std::vector<T>*>(frame.target);
        return slotOf(list.emplace_back());
      },
      // A long list gives back the room it grew into: the profile is held
      // for as long as the platform lives.
      [](ProfileJsonReader&, Frame& frame) {
        auto& list = *static_cast<std::vector<T>*>(frame.target);
        if ((list.capacity() - list.size()) * sizeof(T) >= spareBytes) list.shrink_to_fit();
      }};
  static void array(ProfileJsonReader& reader, std::vector<T>& field, bool) {
    reader.open(&field, elements, true);
  }
};

// An object of a described struct: its members by name, each at most once;
// a member it does not describe fails the read, so a misspelt name is found.
template <Described T>
struct Rules<T> {
  static constexpr std::string_view expected = "an object";

  static std::size_t memberCount() {
    static const std::size_t count = [] {
      T probe{};
      std::size_t n = 0;
      describe([&n](Member, auto&&...) { ++n; }, probe);
      return n;
    }();
    return count;
  }

  static Slot member(ProfileJsonReader& reader, Frame& frame) {
    Slot found;
    std::size_t position = 0, at = 0;
    describe(
        [&](Member member, auto&& field) {
          if (!found.rules && member.name == frame.key) {
            found = slotOf(field);
            at = position;
          }
          ++position;
        },
        *static_cast<T*>(frame.target));
    if (!found.rules) reader.fail("unknown member");
    if (frame.given[at]) reader.fail("duplicate member");
    frame.given[at] = true;
    return found;
  }

  static void close(ProfileJsonReader& reader, Frame& frame) {
    T& value = *static_cast<T*>(frame.target);
    std::size_t position = 0;
    describe(
        [&](Member member, auto&&) {
          if (member.required && !frame.given[position]) {
            reader.failAtMember(member.name, "missing member");
          }
          ++position;
        },
        value);
    if constexpr (requires { profileDefaults(value); }) {
      position = 0;
      describe(
          [&](Member, auto&& field, auto&& fallback) {
            if (!frame.given[position++]) assignDefault(field, fallback);
          },
          value, profileDefaults(value));
    }
    if constexpr (requires { checkProfileObject(value, reader); })
      checkProfileObject(value, reader);
  }

  static constexpr ContainerRules members{&member, &close};

  static void object(ProfileJsonReader& reader, T& field, bool) {
    reader.open(&field, members, false, memberCount());
  }

 private:
  template <typename Field>
  static void assignDefault(Field& field, const Field& fallback) {
    field = fallback;
  }
  template <ProfileCodec Codec, ProfileCodec Fallback>
  static void assignDefault(Codec&& field, const Fallback& fallback) {
    field.value = fallback.value;
  }
};

template <>
struct Rules<FourCharCode<std::uint32_t>> {
  static constexpr std::string_view expected =
      "an integer from 0 to 4294967295 or four printable ASCII characters";
  static void scalar(ProfileJsonReader& reader, std::uint32_t& field, JsonScalar& value, bool);
};

template <>
struct Rules<UuidText<std::optional<Uuid>>> {
  static constexpr std::string_view expected = "a string or null";
  static void scalar(ProfileJsonReader& reader, std::optional<Uuid>& field, JsonScalar& value,
                     bool);
};

template <>
struct Rules<MachineText<std::array<std::uint8_t, 256>>> {
  static constexpr std::string_view expected = "a string";
  static void scalar(ProfileJsonReader& reader, std::array<std::uint8_t, 256>& field,
                     JsonScalar& value, bool);
};

template <>
struct Rules<FrequencyName<Recurrence::Frequency>> {
  static constexpr std::string_view expected = R"("daily", "weekly", "monthly" or "yearly")";
  static void scalar(ProfileJsonReader& reader, Recurrence::Frequency& field, JsonScalar& value,
                     bool);
};

template <>
struct Rules<IdentifierList> {
  static constexpr std::string_view expected = "an array";
  static void array(ProfileJsonReader& reader, IdentifierList& field, bool);
};

template <>
struct Rules<BundleStrings<std::map<std::string, std::string>>> {
  static constexpr std::string_view expected = "an object or null";
  static void scalar(ProfileJsonReader& reader, std::map<std::string, std::string>& field,
                     JsonScalar& value, bool);
  static void object(ProfileJsonReader& reader, std::map<std::string, std::string>& field, bool);
};

// Whether the innermost object, a T, gave its member `name`.
template <Described T>
bool givenMember(ProfileJsonReader& reader, std::string_view name) {
  Frame& frame = reader.innermost();
  std::size_t position = 0;
  bool given = false;
  describe(
      [&](Member member, auto&&) {
        if (member.name == name) given = frame.given[position];
        ++position;
      },
      *static_cast<T*>(frame.target));
  return given;
}

// Reads one value (a whole profile, or a part of one such as the member
// "contacts") from JSON text. `file` names the text in errors, `at` the
// value's pointer within the profile.
template <typename T>
void readProfileJson(const ProfileText& text, T& out, const std::string& file,
                     const ProfileLimits& limits = {}, std::string at = {}) {
  ProfileJsonReader(file, limits, std::move(at)).read(text, slotOf(out));
}

}  // namespace tavrin::platform
