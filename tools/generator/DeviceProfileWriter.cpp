#include "DeviceProfileWriter.hpp"

#include "JsonText.hpp"

#include "platform/profile/ProfileFields.hpp"

#include <cstdio>

namespace tavrin::tool {

using namespace platform;

namespace {

// Whether two values are the same, member by member for the described structs.
template <typename T>
bool same(const T& a, const T& b);

template <typename A, typename B>
bool sameMembers(const A& a, const B& b) {
  if constexpr (ProfileCodec<A>) {
    return same(a.value, b.value);
  } else {
    return same(a, b);
  }
}

template <typename T>
bool same(const T& a, const T& b) {
  if constexpr (Described<const T>) {
    bool equal = true;
    describe([&](Member, const auto& x, const auto& y) { equal = equal && sameMembers(x, y); }, a,
             b);
    return equal;
  } else if constexpr (requires { a.has_value(); }) {
    return a.has_value() == b.has_value() && (!a || same(*a, *b));
  } else if constexpr (requires { a.begin(); } && !std::same_as<T, std::string>) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y) { return same(x, y); });
  } else {
    return a == b;
  }
}

std::string uuidText(const Uuid& uuid) {
  std::string text;
  char digits[3];
  for (std::size_t i = 0; i < uuid.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    std::snprintf(digits, sizeof digits, "%02X", uuid[i]);
    text += digits;
  }
  return text;
}

class ProfileWriter {
 public:
  explicit ProfileWriter(JsonText& json) : _json(json) {}

  // An object: every member that does not hold its default, or must be written.
  template <Described T>
  void write(const T& value) {
    _json.beginObject();
    describe(
        [this](Member member, const auto& field, const auto& fallback) {
          if (!member.always && sameMembers(field, fallback)) return;
          _json.key(member.name);
          write(field);
        },
        value, defaultsFor(value));
    _json.endObject();
  }

  template <typename T>
  void write(const std::optional<T>& value) {
    if (value) {
      write(*value);
    } else {
      _json.null();
    }
  }

  template <typename T>
  void write(const std::vector<T>& values) {
    _json.beginArray();
    for (const auto& value : values) write(value);
    _json.endArray();
  }

  void write(const std::string& value) { _json.string(value); }
  void write(bool value) { _json.boolean(value); }
  void write(double value) { _json.number(value); }
  void write(float value) { _json.number(value); }
  template <std::integral Integer>
  requires(!std::same_as<Integer, bool>) void write(Integer value) {
    if constexpr (std::is_signed_v<Integer>) {
      _json.number(static_cast<std::int64_t>(value));
    } else {
      _json.number(static_cast<std::uint64_t>(value));
    }
  }

  // As its characters when they are printable ("vide"), else as its number.
  void write(const FourCharCode<const std::uint32_t>& code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
      const auto c = static_cast<char>((code.value >> shift) & 0xFF);
      if (c < 0x20 || c >= 0x7F) {
        _json.number(static_cast<std::uint64_t>(code.value));
        return;
      }
      text += c;
    }
    _json.string(text);
  }
  void write(const UuidText<const std::optional<Uuid>>& uuid) {
    if (uuid.value) {
      _json.string(uuidText(*uuid.value));
    } else {
      _json.null();
    }
  }
  // Up to the last non-zero byte; zeros inside stay, as "\u0000".
  void write(const MachineText<const std::array<std::uint8_t, 256>>& machine) {
    const auto& bytes = machine.value;
    std::size_t end = bytes.size();
    while (end > 0 && bytes[end - 1] == 0) --end;
    _json.string(std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(end)));
  }
  void write(const FrequencyName<const Recurrence::Frequency>& frequency) {
    static constexpr const char* names[] = {"daily", "weekly", "monthly", "yearly"};
    _json.string(names[static_cast<int>(frequency.value)]);
  }
  void write(const IdentifierList& identifiers) {
    _json.beginArray();
    for (std::size_t i = 0; i < identifiers.size(); ++i) _json.string(identifiers[i]);
    _json.endArray();
  }
  void write(const BundleStrings<const std::map<std::string, std::string>>& bundle) {
    _json.beginObject();
    for (const auto& [key, value] : bundle.value) {
      _json.key(key);
      _json.string(value);
    }
    _json.endObject();
  }

 private:
  JsonText& _json;
};

}  // namespace

void writeDeviceProfile(const DeviceProfile& profile, std::ostream& out) {
  JsonText json(out);
  ProfileWriter(json).write(profile);
}

}  // namespace tavrin::tool
