#pragma once

#include "extractors/MediaExtractorBase.hpp"

#include <array>
#include <cstdint>

namespace tavrin {

// The "MediaAlbums" source: one row per album, then per smart album, then per
// moment.
class MediaAlbumExtractor : public MediaExtractorBase {
 public:
  // Collection types in the order they are listed: album, smart album, moment.
  static constexpr std::array<std::int64_t, 3> collectionTypes{1, 2, 3};

  using MediaExtractorBase::MediaExtractorBase;

  Element extract() override;

  // Every collection's row, in listing order, in an element named after this
  // source.
  Element collectAlbumRows() const;

  // Builds the 9-value row of one collection and appends it to `rows`. Counting
  // its assets takes one fetch of the collection.
  void appendAlbumRow(const platform::AssetCollection& collection, Element& rows) const;
};

}  // namespace tavrin
