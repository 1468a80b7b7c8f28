#pragma once

#include "codec/RawDeflate.hpp"
#include "collection/DataExtractorManager.hpp"
#include "dataset/MappedBuffer.hpp"

#include <string>

// The one way from a device to what a collection uploads. The service, the
// dataset preview and offline collections all go through these two steps, so
// they cannot drift apart.
namespace tavrin::DatasetPipeline {

// Runs every source of `manager` afresh and writes the dataset as compact
// JSON, releasing each section's values once they are written, so that the
// JSON and its compression, the largest stages, do not stack on top of them.
// Throws JsonWriteError when a value cannot be written.
MappedBuffer datasetJson(DataExtractorManager& manager);

// What the upload carries for a dataset's JSON: the base64 text of its raw
// DEFLATE, by libdeflate unless the benchmarks ask for the zlib reference.
// The JSON is released as soon as it is compressed, before the base64 text
// takes its room. Throws TavrinError processingFailed "Compress failed" when
// the compression yields nothing.
std::string uploadPayload(MappedBuffer json, DeflateEngine engine = DeflateEngine::libdeflate);

}  // namespace tavrin::DatasetPipeline
