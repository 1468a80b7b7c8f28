#pragma once

#include "dataset/Element.hpp"

namespace tavrin::bench {

// A dataset shaped like a large phone's: 100,000 asset-like rows of 13 values
// (identifiers, small integers, dates with fractions, coordinates, nulls and
// booleans) and 20,000 contact-like rows of 27 values with nested rows. About
// 34 MB as JSON. Deterministic.
DatasetDocument makeSyntheticDataset(int assetRows = 100000, int contactRows = 20000);

// Bytes the document holds in memory (the encoded values and section names).
std::size_t datasetMemoryBytes(const DatasetDocument& document);

}  // namespace tavrin::bench
