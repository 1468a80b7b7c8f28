#include "codec/LzmaStream.hpp"

#include <algorithm>
#include <cstdint>

namespace tavrin {
namespace {

// Preset 6 is the one level the phone's compression library offers for its
// LZMA constant, and xz's own default.
constexpr std::uint32_t encoderPreset = 6;
// Enough for any stream xz writes at its standard presets (-9 needs 65 MiB to
// decode), while a hostile header cannot make the decoder reserve more.
constexpr std::uint64_t decoderMemoryLimit = std::uint64_t{128} << 20;

}  // namespace

LzmaStream::~LzmaStream() { lzma_end(&_stream); }

std::unique_ptr<LzmaStream> LzmaStream::open(CodecOperation operation, std::size_t inputSize) {
  std::unique_ptr<LzmaStream> stream(new LzmaStream());
  if (operation == CodecOperation::decode) {
    if (lzma_stream_decoder(&stream->_stream, decoderMemoryLimit, 0) != LZMA_OK) return nullptr;
    return stream;
  }
  lzma_options_lzma options;
  if (lzma_lzma_preset(&options, encoderPreset)) return nullptr;
  // A window larger than the input finds nothing more, yet costs the encoder
  // memory (about 94 MiB at this preset) and every decoder its size: like xz
  // itself, shrink it to the input.
  options.dict_size = static_cast<std::uint32_t>(
      std::clamp<std::size_t>(inputSize, LZMA_DICT_SIZE_MIN, options.dict_size));
  const lzma_filter filters[] = {{LZMA_FILTER_LZMA2, &options}, {LZMA_VLI_UNKNOWN, nullptr}};
  if (lzma_stream_encoder(&stream->_stream, filters, LZMA_CHECK_CRC64) != LZMA_OK) return nullptr;
  return stream;
}

StreamStatus LzmaStream::process(std::span<const std::uint8_t>& source,
                                 std::span<std::uint8_t>& destination) {
  _stream.next_in = source.data();
  _stream.avail_in = source.size();
  _stream.next_out = destination.data();
  _stream.avail_out = destination.size();
  const lzma_ret status = lzma_code(&_stream, LZMA_FINISH);
  source = source.last(_stream.avail_in);
  destination = destination.last(_stream.avail_out);
  switch (status) {
    case LZMA_OK: return StreamStatus::ok;
    case LZMA_STREAM_END: return StreamStatus::end;
    default: return StreamStatus::error;
  }
}

}  // namespace tavrin
