#include "extractors/UnknownFileExtractor.hpp"

namespace tavrin {

Element UnknownFileExtractor::extract() {
  return extractAssets({platform::MediaType::unknown, platform::MediaType::audio});
}

}  // namespace tavrin
