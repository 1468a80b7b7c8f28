#include "platform/profile/ProfileObject.hpp"

#include <algorithm>

namespace tavrin::platform {

ProfileObject::ProfileObject(const ProfileValue& value, bool orNull) : _value(value) {
  if (!value.json().is_object()) value.expected("an object", orNull);
}

ProfileValue ProfileObject::operator[](std::string_view name) {
  _asked.push_back(name);
  const auto& object = _value.json();
  const auto found = object.find(name);
  return ProfileValue(found == object.end() ? nullptr : &*found, _value, name);
}

void ProfileObject::finish() const {
  const auto& object = _value.json();
  for (auto member = object.begin(); member != object.end(); ++member) {
    const std::string& name = member.key();
    if (std::find(_asked.begin(), _asked.end(), name) == _asked.end()) {
      ProfileValue(&*member, _value, name).fail("unknown member");
    }
  }
}

}  // namespace tavrin::platform
