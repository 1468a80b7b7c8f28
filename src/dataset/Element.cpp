#include "dataset/Element.hpp"

namespace tavrin {

namespace {
std::string concatenate(std::string_view prefix, std::string_view text) {
  std::string entry;
  entry.reserve(prefix.size() + text.size());
  entry.append(prefix).append(text);
  return entry;
}
}  // namespace

void Element::addError(const std::exception& error) { addError(std::string_view(error.what())); }

void Element::addError(std::string_view description) {
  _childElements.append(concatenate(errorPrefix, description));
}

void Element::addAccessDenied(std::string_view text) {
  _childElements.append(concatenate(accessDeniedPrefix, text));
}

}  // namespace tavrin
