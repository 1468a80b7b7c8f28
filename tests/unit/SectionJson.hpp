#pragma once

#include "dataset/JsonWriter.hpp"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>

namespace tavrin {

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
