#include "GeneratorRandom.hpp"

#include <numeric>

namespace tavrin::tool {

namespace {

// One step of SplitMix64: spreads a seed and a stream number over all 64 bits.
std::uint64_t mix(std::uint64_t value) {
  value += 0x9E3779B97F4A7C15ULL;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

}  // namespace

GeneratorRandom::GeneratorRandom(std::uint64_t seed, std::uint64_t stream)
    : _engine(mix(mix(seed) ^ stream)) {}

std::uint64_t GeneratorRandom::below(std::uint64_t bound) {
  if (bound == 0) return 0;
  // Rejection keeps the draw exactly uniform.
  const std::uint64_t limit = ~std::uint64_t{0} - (~std::uint64_t{0} % bound);
  std::uint64_t value;
  do {
    value = next();
  } while (value >= limit);
  return value % bound;
}

std::int64_t GeneratorRandom::between(std::int64_t low, std::int64_t high) {
  const auto span = static_cast<std::uint64_t>(high - low) + 1;
  return low + static_cast<std::int64_t>(below(span));
}

double GeneratorRandom::unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

std::size_t GeneratorRandom::weighted(std::span<const double> weights) {
  const double total = std::accumulate(weights.begin(), weights.end(), 0.0);
  double draw = unit() * total;
  for (std::size_t i = 0; i + 1 < weights.size(); ++i) {
    if (draw < weights[i]) return i;
    draw -= weights[i];
  }
  return weights.size() - 1;
}

std::string GeneratorRandom::uuid() {
  static constexpr char hex[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(36);
  const std::uint64_t high = next(), low = next();
  for (int i = 0; i < 32; ++i) {
    if (i == 8 || i == 12 || i == 16 || i == 20) text += '-';
    const std::uint64_t word = i < 16 ? high : low;
    text += hex[(word >> (4 * (15 - i % 16))) & 15];
  }
  return text;
}

std::string GeneratorRandom::digits(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += static_cast<char>('0' + below(10));
  return text;
}

}  // namespace tavrin::tool
