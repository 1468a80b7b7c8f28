#pragma once

#include "dataset/Element.hpp"

#include <string>

namespace tavrin {

// A data source: it reports what it finds in one element named after it and
// never throws; failures and refusals become entries of the element.
class IDataExtractor {
 public:
  virtual ~IDataExtractor() = default;
  virtual const std::string& dataSourceNameKey() const = 0;
  virtual Element extract() = 0;
};

}  // namespace tavrin
