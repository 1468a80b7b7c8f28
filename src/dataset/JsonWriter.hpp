#pragma once

#include "dataset/Element.hpp"
#include "dataset/MappedBuffer.hpp"

namespace tavrin {

// Writes the dataset as compact UTF-8 JSON: an array of one-member objects,
// section name to the array of its values. Doubles take the shortest text that
// reads back to the same value; unsigned integers keep all their digits.
// Throws JsonWriteError, and produces nothing, for a number that is not finite
// or a text that is not valid UTF-8.
MappedBuffer writeJson(const DatasetDocument& document);

}  // namespace tavrin
