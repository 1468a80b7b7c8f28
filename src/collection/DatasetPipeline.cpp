#include "collection/DatasetPipeline.hpp"

#include "collection/StatusResource.hpp"
#include "dataset/JsonWriter.hpp"
#include "os/releaseFreedHeap.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/error.hpp>

namespace tavrin::DatasetPipeline {

MappedBuffer datasetJson(DataExtractorManager& manager) {
  const DatasetDocument document = manager.extractData();
  os::releaseFreedHeap();
  return writeJson(document);
}

std::string uploadPayload(std::span<const std::uint8_t> json) {
  const auto compressed = compress(json, CompressionAlgorithm::zlib);
  if (!compressed) {
    throw TavrinError(ErrorType::processingFailed,
                      std::string(StatusResource::compressFailedMessage));
  }
  return base64Encode(*compressed);
}

}  // namespace tavrin::DatasetPipeline
