#pragma once

#include "extractors/MediaExtractorBase.hpp"

namespace tavrin {

// The "Video" source: one row per videos of the photo library.
class VideoExtractor : public MediaExtractorBase {
 public:
  using MediaExtractorBase::MediaExtractorBase;

  Element extract() override;
};

}  // namespace tavrin
