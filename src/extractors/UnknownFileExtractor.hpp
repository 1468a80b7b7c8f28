#pragma once

#include "extractors/MediaExtractorBase.hpp"

namespace tavrin {

// The "UnknownFiles" source: one row per asset of unknown type, then one per
// audio asset.
class UnknownFileExtractor : public MediaExtractorBase {
 public:
  using MediaExtractorBase::MediaExtractorBase;

  Element extract() override;
};

}  // namespace tavrin
