#pragma once

#include "dataset/Element.hpp"
#include "dataset/JsonWriter.hpp"

#include "platform/profile/ProfilePlatform.hpp"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>

// Helpers for tests that run data sources on the device profiles of tests/data/profiles.
namespace tavrin::test {

inline std::string testDataPath(const std::string& name) {
  return std::string(TAVRIN_TEST_DATA_DIR) + "/profiles/" + name;
}

// The phone described by the profile `name` in tests/data/profiles; besides the ports
// it tells what the last contact enumeration asked for.
inline std::shared_ptr<platform::ProfilePlatform> loadTestProfile(const std::string& name) {
  return platform::ProfilePlatform::load(testDataPath(name));
}

// The values of a section as the dataset's JSON writer writes them.
inline nlohmann::json sectionJson(Element section) {
  const std::string name = section.Name();
  DatasetDocument document;
  document.push_back(std::move(section));
  return nlohmann::json::parse(writeJson(document).view()).at(0).at(name);
}

}  // namespace tavrin::test
