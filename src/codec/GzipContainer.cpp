#include "codec/ByteOrder.hpp"
#include "codec/CompressionDriver.hpp"

#include <tavrin/codec.hpp>

#include <array>
#include <chrono>
#include <limits>

namespace tavrin {
namespace {

constexpr std::uint8_t id1 = 0x1F;
constexpr std::uint8_t id2 = 0x8B;
constexpr std::uint8_t methodDeflate = 8;
constexpr std::uint8_t osUnix = 3;
constexpr std::size_t headerSize = 10;
constexpr std::size_t trailerSize = 8;  // CRC-32, then ISIZE

constexpr std::uint8_t flagHeaderCrc = 1 << 1;
constexpr std::uint8_t flagExtra = 1 << 2;
constexpr std::uint8_t flagName = 1 << 3;
constexpr std::uint8_t flagComment = 1 << 4;

// Whole seconds since 1970, or 0 ("no time stamp") where 32 bits cannot hold them.
std::uint32_t modificationTime() {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
                           std::chrono::system_clock::now().time_since_epoch())
                           .count();
  if (seconds < 0 || seconds > std::numeric_limits<std::uint32_t>::max()) return 0;
  return static_cast<std::uint32_t>(seconds);
}

// The offset just past the zero-terminated field at `position`, which may run
// to `end` without finding its terminator.
std::size_t skipZeroTerminated(std::span<const std::uint8_t> input, std::size_t position,
                               std::size_t end) {
  while (position < end && input[position] != 0) ++position;
  return position + 1;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> gzip(std::span<const std::uint8_t> input) {
  std::vector<std::uint8_t> header = {id1, id2, methodDeflate, 0};
  appendLittleEndian32(header, modificationTime());
  header.push_back(0);  // XFL
  header.push_back(osUnix);

  auto result =
      CompressionDriver::run(CodecOperation::encode, CompressionAlgorithm::zlib, input, header);
  if (!result) return std::nullopt;
  appendLittleEndian32(*result, crc32(input).checksum);
  appendLittleEndian32(*result, static_cast<std::uint32_t>(input.size()));
  return result;
}

std::optional<std::vector<std::uint8_t>> gunzip(std::span<const std::uint8_t> input) {
  if (input.size() < headerSize + trailerSize) return std::nullopt;
  if (input[0] != id1 || input[1] != id2 || input[2] != methodDeflate) return std::nullopt;
  const std::uint8_t flags = input[3];
  const std::size_t end = input.size() - trailerSize;
  const std::uint32_t storedCrc = loadLittleEndian32(input.data() + end);
  const std::uint32_t storedSize = loadLittleEndian32(input.data() + end + 4);

  // Only the first member is read; its optional fields are skipped, the
  // header CRC unchecked.
  std::size_t position = headerSize;
  if (flags & flagExtra) position = headerSize + 2 + loadLittleEndian16(input.data() + headerSize);
  if (flags & flagName) position = skipZeroTerminated(input, position, end);
  if (flags & flagComment) position = skipZeroTerminated(input, position, end);
  if (flags & flagHeaderCrc) position += 2;
  if (position >= end) return std::nullopt;

  auto decoded = CompressionDriver::run(CodecOperation::decode, CompressionAlgorithm::zlib,
                                        input.subspan(position, end - position));
  if (!decoded) return std::nullopt;
  if (static_cast<std::uint32_t>(decoded->size()) != storedSize) return std::nullopt;
  if (crc32(std::span<const std::uint8_t>(*decoded)).checksum != storedCrc) return std::nullopt;
  return decoded;
}

std::optional<std::vector<std::uint8_t>> gzip(const std::vector<std::uint8_t>& input) {
  return gzip(std::span<const std::uint8_t>(input));
}
std::optional<std::vector<std::uint8_t>> gunzip(const std::vector<std::uint8_t>& input) {
  return gunzip(std::span<const std::uint8_t>(input));
}

}  // namespace tavrin
