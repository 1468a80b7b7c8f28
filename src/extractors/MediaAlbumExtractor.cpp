#include "extractors/MediaAlbumExtractor.hpp"

#include "dataset/RunStop.hpp"

namespace tavrin {

Element MediaAlbumExtractor::extract() {
  Element refused(_dataSourceNameKey);
  if (!isAuthorized(refused)) return refused;
  return collectAlbumRows();
}

Element MediaAlbumExtractor::collectAlbumRows() const {
  Element rows(_dataSourceNameKey);
  for (const std::int64_t type : collectionTypes) {
    photos().enumerateCollections(type, platform::PhotoLibrary::anySubtype,
                                  [&](const platform::AssetCollection& collection) {
                                    if (!runStopping()) appendAlbumRow(collection, rows);
                                  });
  }
  return rows;
}

void MediaAlbumExtractor::appendAlbumRow(const platform::AssetCollection& collection,
                                         Element& rows) const {
  Row row;
  row.append(collection.localIdentifier);
  row.append(collection.assetCollectionType);
  row.append(collection.assetCollectionSubtype);
  row.append(photos().assetCount(collection));
  row.append(collection.startDate);
  row.append(collection.endDate);
  appendRotatedLocation(collection.approximateLocation, *locationUtil, row);
  // How many place names the collection has, never the names.
  row.append(static_cast<std::int64_t>(collection.localizedLocationNames.size()));
  rows.append(row);
}

}  // namespace tavrin
