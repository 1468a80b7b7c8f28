#pragma once

#include "dataset/IDataExtractor.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

// A data source that reduces texts to presence flags.
class ExtractorBase : public IDataExtractor {
 public:
  // True when the text is not empty once leading and trailing tabs and Unicode
  // space separators (Zs) are removed. Line breaks count as text.
  static bool hasText(std::string_view text);
  // False for an absent text; otherwise as above.
  static bool hasText(const std::optional<std::string>& text) {
    return text && hasText(std::string_view(*text));
  }
};

}  // namespace tavrin
