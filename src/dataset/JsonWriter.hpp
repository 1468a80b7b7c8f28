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
// The same, releasing each section's values as soon as they are written, so
// that the text and the values it is made from are held together for one
// section at a time only.
MappedBuffer writeJson(DatasetDocument&& document);

}  // namespace tavrin
