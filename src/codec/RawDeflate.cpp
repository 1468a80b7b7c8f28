#include "codec/RawDeflate.hpp"

#include "codec/CompressionDriver.hpp"

#include <libdeflate.h>

#include <memory>

namespace tavrin {
namespace {

using Compressor = std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)>;

bool libdeflateEncode(std::span<const std::uint8_t> input,
                      const std::function<void(std::span<const std::uint8_t>)>& take) {
  const Compressor compressor(libdeflate_alloc_compressor(libdeflateLevel),
                              &libdeflate_free_compressor);
  if (!compressor) return false;
  // libdeflate codes a whole buffer into room for the worst case. The pages
  // the output does not reach are never touched, so they never become resident.
  const std::size_t bound = libdeflate_deflate_compress_bound(compressor.get(), input.size());
  const auto output = std::make_unique_for_overwrite<std::uint8_t[]>(bound);
  const std::size_t written = libdeflate_deflate_compress(compressor.get(), input.data(),
                                                          input.size(), output.get(), bound);
  if (written == 0) return false;
  take({output.get(), written});
  return true;
}

}  // namespace

bool withRawDeflate(std::span<const std::uint8_t> input, DeflateEngine engine,
                    const std::function<void(std::span<const std::uint8_t>)>& take) {
  if (engine == DeflateEngine::libdeflate) return libdeflateEncode(input, take);
  const auto stream = CompressionDriver::openStream(CodecOperation::encode,
                                                    CompressionAlgorithm::zlib, input.size());
  const auto encoded = stream ? CompressionDriver::drive(*stream, input, {}) : std::nullopt;
  if (!encoded) return false;
  take(*encoded);
  return true;
}

}  // namespace tavrin
