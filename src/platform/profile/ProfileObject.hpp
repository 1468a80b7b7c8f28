#pragma once

#include "platform/profile/ProfileValue.hpp"

#include <string_view>
#include <vector>

namespace tavrin::platform {

// A JSON object of a profile, read member by member. Every member the reader
// asks for is noted; `finish` then rejects any member nobody asked for, so a
// misspelt name fails the load instead of being ignored.
class ProfileObject {
 public:
  // Fails unless `value` is an object ("expected an object", "or null" when
  // null was also allowed there).
  explicit ProfileObject(const ProfileValue& value, bool orNull = false);

  // The member `name`; missing() when the object has none.
  ProfileValue operator[](std::string_view name);

  // Reads the member `name` into `field` when it is there; a missing member
  // leaves the field's default.
  template <typename T>
  ProfileObject& read(std::string_view name, T& field) {
    const auto member = (*this)[name];
    if (!member.missing()) readValue(member, field);
    return *this;
  }

  // Reads the member `name`, which must be there.
  template <typename T>
  ProfileObject& require(std::string_view name, T& field) {
    const auto member = (*this)[name];
    if (member.missing()) member.fail("missing member");
    readValue(member, field);
    return *this;
  }

  // Fails at the first member that was never asked for.
  void finish() const;

  const ProfileValue& value() const { return _value; }

 private:
  const ProfileValue& _value;
  std::vector<std::string_view> _asked;
};

}  // namespace tavrin::platform
