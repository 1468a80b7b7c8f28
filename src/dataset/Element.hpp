#pragma once

#include "dataset/Row.hpp"

#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

// One section of the dataset: the name of the source that made it and the
// values it reported, in the order they were appended.
class Element {
 public:
  static constexpr std::string_view errorPrefix = "EXTRACTING ERROR : ";
  static constexpr std::string_view accessDeniedPrefix = "EXTRACTING ERROR : Access denied ";

  explicit Element(std::string name) : _name(std::move(name)) {}

  const std::string& Name() const { return _name; }
  const Row& ChildElements() const { return _childElements; }

  // Appends one value (null, boolean, number, text, optional or row).
  template <typename T>
  void append(const T& value) {
    _childElements.append(value);
  }

  // Records a failed platform call: the prefix and the error's description.
  void addError(const std::exception& error);
  // Records a failure described by text alone (a platform error's description).
  void addError(std::string_view description);
  // Records a permission that is not granted: the access-denied prefix and `text`.
  void addAccessDenied(std::string_view text);

  // Gives back storage beyond what the values use, once the section is complete.
  void shrinkToFit() { _childElements.shrinkToFit(); }

 private:
  std::string _name;
  Row _childElements;
};

// The dataset: its sections in order, "GeneralInfo" first.
using DatasetDocument = std::vector<Element>;

}  // namespace tavrin
