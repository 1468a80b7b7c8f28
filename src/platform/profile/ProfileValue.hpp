#pragma once

#include <nlohmann/json.hpp>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::platform {

// One value of a profile being read, with the way to it. The JSON pointer is
// built only when an error needs it, by walking up the chain of parents, so
// reading a large profile costs no string work per value.
class ProfileValue {
 public:
  // The document itself, read from `file`.
  ProfileValue(const nlohmann::json& root, const std::string& file) : _value(&root), _file(&file) {}
  // The member `name` of `parent`; `value` is null when the member is missing.
  ProfileValue(const nlohmann::json* value, const ProfileValue& parent, std::string_view name)
      : _value(value), _file(parent._file), _parent(&parent), _name(name) {}
  // The element `index` of the array `parent`.
  ProfileValue(const nlohmann::json& value, const ProfileValue& parent, std::size_t index)
      : _value(&value), _file(parent._file), _parent(&parent), _index(index) {}

  bool missing() const { return _value == nullptr; }
  // Missing or JSON null: an absent optional.
  bool isNull() const { return _value == nullptr || _value->is_null(); }
  const nlohmann::json& json() const { return *_value; }

  // The JSON pointer of this value, for example "/contacts/list/3/birthday".
  std::string pointer() const;
  // Throws the DeviceProfileError that names this value and `reason`.
  [[noreturn]] void fail(const std::string& reason) const;
  // Fails with "expected WHAT" (and "or null" where null was also allowed).
  [[noreturn]] void expected(std::string_view what, bool orNull) const;

 private:
  const nlohmann::json* _value;
  const std::string* _file;
  const ProfileValue* _parent = nullptr;
  std::string_view _name;
  std::size_t _index = 0;
};

// Appends a member name to a JSON pointer as one token ("~" and "/" escaped).
void appendPointerToken(std::string& pointer, std::string_view name);

// Reading a value into a field. `orNull` says whether null was also allowed
// there, only so that the error can say so.
void readValue(const ProfileValue& value, std::string& out, bool orNull = false);
void readValue(const ProfileValue& value, bool& out, bool orNull = false);
void readValue(const ProfileValue& value, double& out, bool orNull = false);
void readValue(const ProfileValue& value, float& out, bool orNull = false);

// The integer of a JSON number when it is one exactly: an integer literal,
// or a number with no fraction in the range of the target.
std::optional<std::int64_t> exactSigned(const nlohmann::json& value);
std::optional<std::uint64_t> exactUnsigned(const nlohmann::json& value);

template <typename T>
void readValue(const ProfileValue& value, std::optional<T>& out, bool orNull = false);
template <typename T>
void readValue(const ProfileValue& value, std::vector<T>& out, bool orNull = false);

template <std::integral Integer>
void readValue(const ProfileValue& value, Integer& out, bool orNull = false) {
  const auto& json = value.json();
  if (!json.is_number()) value.expected("an integer", orNull);
  using Limits = std::numeric_limits<Integer>;
  if constexpr (std::is_signed_v<Integer>) {
    const auto exact = exactSigned(json);
    if (exact && *exact >= Limits::min() && *exact <= Limits::max()) {
      out = static_cast<Integer>(*exact);
      return;
    }
  } else {
    const auto exact = exactUnsigned(json);
    if (exact && *exact <= Limits::max()) {
      out = static_cast<Integer>(*exact);
      return;
    }
  }
  value.expected(
      "an integer from " + std::to_string(Limits::min()) + " to " + std::to_string(Limits::max()),
      orNull);
}

// An optional field: null or missing is absent; anything else is read as T.
template <typename T>
void readValue(const ProfileValue& value, std::optional<T>& out, bool) {
  if (value.isNull()) {
    out.reset();
    return;
  }
  T read{};
  readValue(value, read, true);
  out = std::move(read);
}

// A list: every element is read as T, with its index in the pointer.
template <typename T>
void readValue(const ProfileValue& value, std::vector<T>& out, bool orNull) {
  const auto& json = value.json();
  if (!json.is_array()) value.expected("an array", orNull);
  std::vector<T> read;
  read.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    readValue(ProfileValue(json[i], value, i), read.emplace_back());
  }
  out = std::move(read);
}

}  // namespace tavrin::platform
