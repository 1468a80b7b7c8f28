#include "collection/DatasetPipeline.hpp"

#include "collection/StatusResource.hpp"
#include "dataset/JsonWriter.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/error.hpp>

namespace tavrin::DatasetPipeline {

MappedBuffer datasetJson(DataExtractorManager& manager) { return writeJson(manager.extractData()); }

std::string uploadPayload(MappedBuffer json, DeflateEngine engine) {
  std::string payload;
  const bool compressed =
      withRawDeflate(json.bytes(), engine, [&](std::span<const std::uint8_t> deflated) {
        json = MappedBuffer();
        payload = base64Encode(deflated);
      });
  if (!compressed) {
    throw TavrinError(ErrorType::processingFailed,
                      std::string(StatusResource::compressFailedMessage));
  }
  return payload;
}

}  // namespace tavrin::DatasetPipeline
