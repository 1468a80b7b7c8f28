#pragma once

#include "collection/DataExtractorManager.hpp"
#include "dataset/MappedBuffer.hpp"

#include <cstdint>
#include <span>
#include <string>

// The one way from a device to what a collection uploads. The service, the
// dataset preview and offline collections all go through these two steps, so
// they cannot drift apart.
namespace tavrin::DatasetPipeline {

// Runs every source of `manager` afresh and writes the dataset as compact
// JSON. The heap the sources freed is handed back to the system first, so the
// JSON and its compression, the largest stages, do not stack on top of it.
// Throws JsonWriteError when a value cannot be written.
MappedBuffer datasetJson(DataExtractorManager& manager);

// What the upload carries for a dataset's JSON: the base64 text of its raw
// DEFLATE. Throws TavrinError processingFailed "Compress failed" when the
// compression yields nothing.
std::string uploadPayload(std::span<const std::uint8_t> json);

}  // namespace tavrin::DatasetPipeline
