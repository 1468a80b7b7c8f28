#pragma once

// Running sources on the device profiles of tests/data/profiles, and reading
// back what they report as the dataset's JSON writer writes it.

#include "dataset/JsonWriter.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>

namespace tavrin {

// The phone the profile `name` describes; besides the ports it tells what the
// last contact enumeration asked for.
inline std::shared_ptr<platform::ProfilePlatform> loadTestProfile(const std::string& name) {
  return platform::ProfilePlatform::load(TAVRIN_TEST_DATA_DIR "/profiles/" + name);
}

// A section as the dataset writes it: `[{"Name":[...]}]`.
inline std::string sectionJson(Element element) {
  DatasetDocument document;
  document.push_back(std::move(element));
  return writeJson(document).str();
}

// The values of a section, read back from its JSON.
inline nlohmann::json sectionValues(Element element) {
  const std::string name = element.Name();
  return nlohmann::json::parse(sectionJson(std::move(element))).at(0).at(name);
}

}  // namespace tavrin
