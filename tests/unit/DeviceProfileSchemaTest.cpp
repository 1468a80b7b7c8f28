// The published JSON Schema (docs/device-profile.schema.json) against the
// members the reader reads and the generator writes (platform/profile/
// ProfileFields.hpp): in every object from the top of a profile down, the same
// member names, the same JSON types for each, integer ranges within the
// field's, and the same required members.

#include "platform/profile/ProfileFields.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <limits>
#include <set>

namespace tavrin::platform {
namespace {

using Json = nlohmann::json;
using Types = std::set<std::string>;

const Json schema =
    Json::parse(std::ifstream(TAVRIN_SOURCE_DIR "/docs/device-profile.schema.json"));

// What a schema node accepts, with its references followed and its oneOf
// branches joined: the JSON types, the bounds of its numbers, and the nodes
// that describe its members and its items.
struct Accepts {
  Types types;
  Json minimum, maximum;
  const Json* object = nullptr;
  const Json* items = nullptr;
};

const Json& resolved(const Json& node) {
  if (!node.contains("$ref")) return node;
  const auto ref = node["$ref"].get<std::string>();
  return resolved(schema.at(Json::json_pointer(ref.substr(1))));
}

void join(const Json& given, Accepts& into) {
  const Json& node = resolved(given);
  if (node.contains("type")) {
    for (const auto& type : node["type"].is_array() ? node["type"] : Json::array({node["type"]})) {
      into.types.insert(type.get<std::string>());
      if (type == "object") into.object = &node;
    }
  }
  for (const auto& value : node.value("enum", Json::array())) into.types.insert(value.type_name());
  if (node.contains("minimum")) into.minimum = node["minimum"];
  if (node.contains("maximum")) into.maximum = node["maximum"];
  if (node.contains("items")) into.items = &node["items"];
  if (node.contains("oneOf")) {
    for (const auto& branch : node["oneOf"]) join(branch, into);
  }
}

template <typename T>
constexpr bool isOptional = false;
template <typename T>
constexpr bool isOptional<std::optional<T>> = true;
template <typename T>  // the lists, and what each item is
struct ItemOf {};
template <typename T>
struct ItemOf<std::vector<T>> {
  using type = T;
};
template <>
struct ItemOf<IdentifierList> {
  using type = std::string;
};
template <typename T>
constexpr bool isList = requires {
  typename ItemOf<T>::type;
};

// The JSON types a member of C++ type F takes.
template <typename F>
Types typesOf() {
  if constexpr (isOptional<F>) {
    auto types = typesOf<typename F::value_type>();
    types.insert("null");
    return types;
  } else if constexpr (std::is_same_v<F, std::string> || ProfileCodec<F>) {
    if constexpr (std::is_same_v<F, FourCharCode<std::uint32_t>>) return {"integer", "string"};
    if constexpr (std::is_same_v<F, UuidText<std::optional<Uuid>>>) return {"string", "null"};
    if constexpr (std::is_same_v<F, BundleStrings<std::map<std::string, std::string>>>) {
      return {"object", "null"};
    }
    return {"string"};
  } else if constexpr (std::is_same_v<F, bool>) {
    return {"boolean"};
  } else if constexpr (std::is_floating_point_v<F>) {
    return {"number"};
  } else if constexpr (std::is_integral_v<F>) {
    return {"integer"};
  } else if constexpr (isList<F>) {
    return {"array"};
  } else {
    static_assert(Described<F>);
    return {"object"};
  }
}

// The bounds of the numbers a member of type F holds, where it has any.
template <typename F>
std::optional<std::pair<Json, Json>> boundsOf() {
  if constexpr (std::is_same_v<F, FourCharCode<std::uint32_t>>) return boundsOf<std::uint32_t>();
  if constexpr (std::is_integral_v<F> && !std::is_same_v<F, bool>) {
    return std::pair{Json(std::numeric_limits<F>::min()), Json(std::numeric_limits<F>::max())};
  }
  if constexpr (std::is_same_v<F, float>) {
    return std::pair{Json(-std::numeric_limits<float>::max()),
                     Json(std::numeric_limits<float>::max())};
  }
  return {};
}

template <typename F>
void agree(const Json& node, const std::string& path);

// The members of a described object against the object node's properties.
template <Described T>
void agreeMembers(const Json& object, const std::string& path) {
  const Json properties = object.value("properties", Json::object()),
             required = object.value("required", Json::array());
  Types described, schemaMembers;
  T probe{};
  describe(
      [&](Member member, auto&& field) {
        const std::string name(member.name);
        described.insert(name);
        EXPECT_EQ(member.required, std::count(required.begin(), required.end(), name) == 1)
            << path << "/" << name << ": required in one and not the other";
        if (properties.contains(name)) {
          agree<std::remove_cvref_t<decltype(field)>>(properties[name], path + "/" + name);
        }
      },
      probe);
  for (const auto& [name, value] : properties.items()) schemaMembers.insert(name);
  EXPECT_EQ(described, schemaMembers) << path;
}

template <typename F>
void agreeStructure(const Accepts& accepts, const std::string& path) {
  if constexpr (isOptional<F>) {
    agreeStructure<typename F::value_type>(accepts, path);
  } else if constexpr (isList<F>) {
    ASSERT_TRUE(accepts.items) << path;
    agree<typename ItemOf<F>::type>(*accepts.items, path + "/items");
  } else if constexpr (Described<F>) {
    ASSERT_TRUE(accepts.object) << path;
    agreeMembers<F>(*accepts.object, path);
  } else if (const auto bounds = boundsOf<F>()) {
    // The schema may narrow a range (an interval of at least 1), never widen it.
    ASSERT_FALSE(accepts.minimum.is_null() || accepts.maximum.is_null()) << path;
    EXPECT_LE(bounds->first, accepts.minimum) << path;
    EXPECT_GE(bounds->second, accepts.maximum) << path;
  }
}

template <typename F>
void agree(const Json& node, const std::string& path) {
  Accepts accepts;
  join(node, accepts);
  EXPECT_EQ(accepts.types, typesOf<F>()) << path;
  agreeStructure<F>(accepts, path);
}

TEST(DeviceProfileSchema, AgreesWithTheMembersTheReaderReads) { agree<DeviceProfile>(schema, ""); }

}  // namespace
}  // namespace tavrin::platform
