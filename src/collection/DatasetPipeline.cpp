#include "collection/DatasetPipeline.hpp"

#include "collection/PermissionHeplper.hpp"
#include "collection/StatusResource.hpp"
#include "dataset/JsonWriter.hpp"
#include "dataset/RunStop.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/error.hpp>

namespace tavrin::DatasetPipeline {

MappedBuffer datasetJson(DataExtractorManager& manager) {
  MappedBuffer json = writeJson(manager.extractData());
  checkRunStop();
  return json;
}

std::string uploadPayload(MappedBuffer json, const RunEvents& events, DeflateEngine engine) {
  const std::size_t jsonSize = json.size();
  std::size_t deflatedSize = 0;
  std::string payload;
  const bool compressed =
      withRawDeflate(json.bytes(), engine, [&](std::span<const std::uint8_t> deflated) {
        json = MappedBuffer();
        deflatedSize = deflated.size();
        payload = base64Encode(deflated);
      });
  if (!compressed) {
    throw TavrinError(ErrorType::processingFailed,
                      std::string(StatusResource::compressFailedMessage));
  }
  checkRunStop();
  events.log(LogLevel::info, "dataset: " + std::to_string(jsonSize) + " bytes of JSON, " +
                                 std::to_string(deflatedSize) + " of raw DEFLATE, " +
                                 std::to_string(payload.size()) + " of base64");
  return payload;
}

std::string previewJson(platform::Platform& platform, DataExtractorManager& manager) {
  PermissionHeplper::requestPermissions(platform);
  return datasetJson(manager).str();
}

}  // namespace tavrin::DatasetPipeline
