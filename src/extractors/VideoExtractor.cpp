#include "extractors/VideoExtractor.hpp"

namespace tavrin {

Element VideoExtractor::extract() { return extractAssets({platform::MediaType::video}); }

}  // namespace tavrin
