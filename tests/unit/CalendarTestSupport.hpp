#pragma once

// Loading the calendar fixtures and reading back what a source reported.

#include "dataset/Element.hpp"

#include <tavrin/platform/Platform.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <type_traits>
#include <variant>

namespace tavrin::calendartest {

inline std::shared_ptr<platform::Platform> loadProfile(const std::string& name) {
  return platform::loadDeviceProfile(std::string(TAVRIN_TEST_DATA_DIR) + "/profiles/" + name);
}

// The values as JSON whose text tells a float (1.0) from an integer (1).
inline nlohmann::json toJson(const Value& value) {
  return std::visit(
      [](const auto& v) -> nlohmann::json {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::string_view>) {
          return std::string(v);
        } else if constexpr (std::is_same_v<T, RowView>) {
          nlohmann::json values = nlohmann::json::array();
          for (const Value& inner : v) values.push_back(toJson(inner));
          return values;
        } else {
          return v;
        }
      },
      value);
}

// Names a parameterized case after its `name` member.
template <typename Case>
std::string caseName(const testing::TestParamInfo<Case>& param) {
  return param.param.name;
}

// Compares the element's values with `expected`, a JSON array, kinds included.
inline void expectChildren(const Element& element, const std::string& expected) {
  EXPECT_EQ(toJson(element.ChildElements().view()).dump(), nlohmann::json::parse(expected).dump())
      << element.Name();
}

}  // namespace tavrin::calendartest
