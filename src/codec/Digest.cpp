#include "codec/ByteOrder.hpp"

#include <tavrin/digest.hpp>

#include <bit>
#include <cstring>
#include <utility>

namespace tavrin {
namespace {

// MD5 exactly as RFC 1321 gives it. The 64 steps are unrolled at compile time
// from the RFC's tables, so every shift, word index and constant is an
// immediate; short messages are padded on the stack and nothing is allocated.

constexpr std::size_t blockSize = 64;

// K[i] = floor(2^32 * |sin(i + 1)|).
constexpr std::uint32_t sineTable[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int shifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// The message word that step `step` (0 to 63) reads.
constexpr std::size_t wordIndex(std::size_t step) {
  const std::size_t i = step % 16;
  switch (step / 16) {
    case 0: return i;
    case 1: return (5 * i + 1) % 16;
    case 2: return (3 * i + 5) % 16;
    default: return (7 * i) % 16;
  }
}

// One step: a = b + ((a + round function(b, c, d) + X[k] + K[step]) <<< s).
// The round functions are written in forms with shorter dependency chains;
// in round 2, G = (b & d) | (c & ~d) is summed in two parts so the part that
// does not wait for b goes first.
template <std::size_t stepIndex>
[[gnu::always_inline]] inline void step(std::uint32_t& a, std::uint32_t b, std::uint32_t c,
                                        std::uint32_t d, const std::uint8_t* block) {
  constexpr std::size_t round = stepIndex / 16;
  a += loadLittleEndian32(block + 4 * wordIndex(stepIndex)) + sineTable[stepIndex];
  if constexpr (round == 0) {
    a += d ^ (b & (c ^ d));
  } else if constexpr (round == 1) {
    a += c & ~d;
    a += b & d;
  } else if constexpr (round == 2) {
    a += b ^ c ^ d;
  } else {
    a += c ^ (b | ~d);
  }
  a = b + std::rotl(a, shifts[round][stepIndex % 4]);
}

// Four steps from `first`, the state words rotating roles as the RFC lists them.
template <std::size_t first>
[[gnu::always_inline]] inline void fourSteps(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
                                             std::uint32_t& d, const std::uint8_t* block) {
  step<first>(a, b, c, d, block);
  step<first + 1>(d, a, b, c, block);
  step<first + 2>(c, d, a, b, block);
  step<first + 3>(b, c, d, a, block);
}

template <std::size_t... quads>
[[gnu::always_inline]] inline void allSteps(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
                                            std::uint32_t& d, const std::uint8_t* block,
                                            std::index_sequence<quads...>) {
  (fourSteps<4 * quads>(a, b, c, d, block), ...);
}

struct State {
  std::uint32_t a = 0x67452301;
  std::uint32_t b = 0xefcdab89;
  std::uint32_t c = 0x98badcfe;
  std::uint32_t d = 0x10325476;
};

void processBlocks(State& state, const std::uint8_t* blocks, std::size_t count) {
  std::uint32_t a = state.a, b = state.b, c = state.c, d = state.d;
  for (; count > 0; --count, blocks += blockSize) {
    const std::uint32_t a0 = a, b0 = b, c0 = c, d0 = d;
    allSteps(a, b, c, d, blocks, std::make_index_sequence<16>());
    a += a0;
    b += b0;
    c += c0;
    d += d0;
  }
  state = {a, b, c, d};
}

std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> message) {
  State state;
  const std::size_t fullBlocks = message.size() / blockSize;
  processBlocks(state, message.data(), fullBlocks);

  // The rest of the message, 0x80, zeros up to 56 mod 64, then the length in bits (LE64).
  const std::size_t rest = message.size() % blockSize;
  std::uint8_t tail[2 * blockSize] = {};
  if (rest > 0) std::memcpy(tail, message.data() + fullBlocks * blockSize, rest);
  tail[rest] = 0x80;
  const std::size_t tailSize = rest < 56 ? blockSize : 2 * blockSize;
  const std::uint64_t bitLength = static_cast<std::uint64_t>(message.size()) << 3;
  storeLittleEndian32(tail + tailSize - 8, static_cast<std::uint32_t>(bitLength));
  storeLittleEndian32(tail + tailSize - 4, static_cast<std::uint32_t>(bitLength >> 32));
  processBlocks(state, tail, tailSize / blockSize);

  std::array<std::uint8_t, 16> digest;
  storeLittleEndian32(digest.data(), state.a);
  storeLittleEndian32(digest.data() + 4, state.b);
  storeLittleEndian32(digest.data() + 8, state.c);
  storeLittleEndian32(digest.data() + 12, state.d);
  return digest;
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

Digest::Digest(std::span<const std::uint8_t> message) : _digest(md5(message)) {}

Digest::Digest(const std::vector<std::uint8_t>& message)
    : Digest(std::span<const std::uint8_t>(message)) {}

std::string Digest::checksum() const {
  constexpr char hex[] = "0123456789abcdef";
  std::string text(2 * _digest.size(), '\0');
  for (std::size_t index = 0; index < _digest.size(); ++index) {
    text[2 * index] = hex[_digest[index] >> 4];
    text[2 * index + 1] = hex[_digest[index] & 0xF];
  }
  return text;
}

std::string toMd5(std::string_view text) { return Digest(bytesOf(text)).checksum(); }

std::array<std::uint8_t, 16> md5Digest(std::string_view text) { return md5(bytesOf(text)); }

}  // namespace tavrin
