#include "codec/ZlibStream.hpp"

#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <utility>

namespace tavrin {
namespace {

// Negative window bits select raw DEFLATE with a 32 KiB window.
constexpr int rawDeflateWindowBits = -15;
constexpr int memoryLevel = 8;

}  // namespace

void ZlibStream::Release::operator()(z_stream_s* stream) const {
  if (operation == CodecOperation::encode) {
    ::deflateEnd(stream);
  } else {
    ::inflateEnd(stream);
  }
  delete stream;
}

ZlibStream::ZlibStream(std::unique_ptr<z_stream_s, Release> stream, std::size_t sliceLimit)
    : _stream(std::move(stream)), _sliceLimit(sliceLimit) {}

std::unique_ptr<ZlibStream> ZlibStream::open(CodecOperation operation, std::size_t sliceLimit) {
  auto stream = std::make_unique<z_stream>();  // zeroed: zlib's default allocator
  const int status = operation == CodecOperation::encode
                         ? ::deflateInit2(stream.get(), compressionLevel, Z_DEFLATED,
                                          rawDeflateWindowBits, memoryLevel, Z_DEFAULT_STRATEGY)
                         : ::inflateInit2(stream.get(), rawDeflateWindowBits);
  if (status != Z_OK) return nullptr;
  std::unique_ptr<z_stream_s, Release> owned(stream.release(), Release{operation});
  return std::unique_ptr<ZlibStream>(
      new ZlibStream(std::move(owned), std::max<std::size_t>(sliceLimit, 1)));
}

StreamStatus ZlibStream::process(std::span<const std::uint8_t>& source,
                                 std::span<std::uint8_t>& destination) {
  z_stream& stream = *_stream;
  const bool encoding = _stream.get_deleter().operation == CodecOperation::encode;
  for (;;) {
    const std::size_t handed = std::min(source.size(), _sliceLimit);
    const bool lastSlice = handed == source.size();
    stream.next_in = source.data();
    stream.avail_in = static_cast<uInt>(handed);
    stream.next_out = destination.data();
    stream.avail_out = static_cast<uInt>(std::min(destination.size(), _sliceLimit));
    const int flush = lastSlice ? Z_FINISH : Z_NO_FLUSH;
    const int status = encoding ? ::deflate(&stream, flush) : ::inflate(&stream, flush);
    const std::size_t consumed = handed - stream.avail_in;
    const auto produced = static_cast<std::size_t>(stream.next_out - destination.data());
    source = source.subspan(consumed);
    destination = destination.subspan(produced);
    if (status == Z_STREAM_END) return StreamStatus::end;
    // With Z_FINISH, inflate reports a full output buffer as Z_BUF_ERROR; the
    // driver tells that apart from truncated input by the room left.
    if (status != Z_OK && status != Z_BUF_ERROR) return StreamStatus::error;
    if (destination.empty() || (lastSlice && stream.avail_out > 0)) return StreamStatus::ok;
    if (consumed == 0 && produced == 0) return StreamStatus::error;
  }
}

}  // namespace tavrin
