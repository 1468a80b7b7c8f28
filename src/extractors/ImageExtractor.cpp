#include "extractors/ImageExtractor.hpp"

namespace tavrin {

Element ImageExtractor::extract() { return extractAssets({platform::MediaType::image}); }

}  // namespace tavrin
