#include "platform/profile/ProfileValue.hpp"

#include <tavrin/platform/Platform.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavrin::platform {

void appendPointerToken(std::string& out, std::string_view name) {
  for (char c : name) {
    if (c == '~') {
      out += "~0";
    } else if (c == '/') {
      out += "~1";
    } else {
      out += c;
    }
  }
}

namespace {
constexpr double twoTo63 = 9223372036854775808.0;

}  // namespace

std::string ProfileValue::pointer() const {
  std::vector<const ProfileValue*> chain;
  for (const auto* v = this; v->_parent != nullptr; v = v->_parent) chain.push_back(v);
  std::string out;
  std::reverse(chain.begin(), chain.end());  // from the root down
  for (const ProfileValue* value : chain) {
    out += '/';
    if (value->_parent->json().is_array()) {
      out += std::to_string(value->_index);
    } else {
      appendPointerToken(out, value->_name);
    }
  }
  return out;
}

void ProfileValue::fail(const std::string& reason) const {
  throw DeviceProfileError(*_file, pointer(), reason);
}

void ProfileValue::expected(std::string_view what, bool orNull) const {
  std::string reason = "expected ";
  reason += what;
  if (orNull) reason += " or null";
  fail(reason);
}

std::optional<std::int64_t> exactSigned(const nlohmann::json& value) {
  switch (value.type()) {
    case nlohmann::json::value_t::number_integer: return value.get<std::int64_t>();
    case nlohmann::json::value_t::number_unsigned: {
      const auto u = value.get<std::uint64_t>();
      if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return {};
      return static_cast<std::int64_t>(u);
    }
    case nlohmann::json::value_t::number_float: {
      const auto d = value.get<double>();
      if (d != std::trunc(d) || d < -twoTo63 || d >= twoTo63) return {};
      return static_cast<std::int64_t>(d);
    }
    default: return {};
  }
}

std::optional<std::uint64_t> exactUnsigned(const nlohmann::json& value) {
  switch (value.type()) {
    case nlohmann::json::value_t::number_integer: {
      const auto i = value.get<std::int64_t>();
      if (i < 0) return {};
      return static_cast<std::uint64_t>(i);
    }
    case nlohmann::json::value_t::number_unsigned: return value.get<std::uint64_t>();
    case nlohmann::json::value_t::number_float: {
      const auto d = value.get<double>();
      if (d != std::trunc(d) || d < 0 || d >= 2 * twoTo63) return {};
      return static_cast<std::uint64_t>(d);
    }
    default: return {};
  }
}

void readValue(const ProfileValue& value, std::string& out, bool orNull) {
  if (!value.json().is_string()) value.expected("a string", orNull);
  out = value.json().get<std::string>();
}

void readValue(const ProfileValue& value, bool& out, bool orNull) {
  if (!value.json().is_boolean()) value.expected("a boolean", orNull);
  out = value.json().get<bool>();
}

void readValue(const ProfileValue& value, double& out, bool orNull) {
  if (!value.json().is_number()) value.expected("a number", orNull);
  out = value.json().get<double>();
}

void readValue(const ProfileValue& value, float& out, bool orNull) {
  double wide = 0;
  readValue(value, wide, orNull);
  if (std::fabs(wide) > std::numeric_limits<float>::max()) {
    value.expected("a number within the range of a 32-bit float", orNull);
  }
  out = static_cast<float>(wide);
}

}  // namespace tavrin::platform
