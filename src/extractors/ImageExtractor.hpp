#pragma once

#include "extractors/MediaExtractorBase.hpp"

namespace tavrin {

// The "Images" source: one row per still images of the photo library.
class ImageExtractor : public MediaExtractorBase {
 public:
  using MediaExtractorBase::MediaExtractorBase;

  Element extract() override;
};

}  // namespace tavrin
