#include "collection/DatasetPipeline.hpp"

#include "collection/PermissionHeplper.hpp"
#include "collection/StatusResource.hpp"
#include "dataset/JsonWriter.hpp"
#include "dataset/RunStop.hpp"
#include "os/releaseFreedHeap.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/error.hpp>

namespace tavrin::DatasetPipeline {

MappedBuffer datasetJson(DataExtractorManager& manager) {
  const DatasetDocument document = manager.extractData();
  os::releaseFreedHeap();
  MappedBuffer json = writeJson(document);
  checkRunStop();
  return json;
}

std::string uploadPayload(std::span<const std::uint8_t> json, const RunEvents& events) {
  const auto compressed = compress(json, CompressionAlgorithm::zlib);
  if (!compressed) {
    throw TavrinError(ErrorType::processingFailed,
                      std::string(StatusResource::compressFailedMessage));
  }
  checkRunStop();
  std::string payload = base64Encode(*compressed);
  events.log(LogLevel::info, "dataset: " + std::to_string(json.size()) + " bytes of JSON, " +
                                 std::to_string(compressed->size()) + " of raw DEFLATE, " +
                                 std::to_string(payload.size()) + " of base64");
  return payload;
}

std::string previewJson(platform::Platform& platform, DataExtractorManager& manager) {
  PermissionHeplper::requestPermissions(platform);
  return datasetJson(manager).str();
}

}  // namespace tavrin::DatasetPipeline
