#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>

namespace tavrin::tool {

// The generator's source of chance. The engine's sequence is fixed by the C++
// standard, and the draws below are computed here rather than by the standard
// library's distributions (whose results differ between implementations), so
// one seed gives the same phone with every compiler and library.
class GeneratorRandom {
 public:
  // `stream` separates the sections of a phone: each draws from its own
  // sequence, so changing the number of contacts leaves the photos as they were.
  GeneratorRandom(std::uint64_t seed, std::uint64_t stream);

  std::uint64_t next() { return _engine(); }
  // A uniform integer in [0, bound); 0 when the bound is 0.
  std::uint64_t below(std::uint64_t bound);
  // A uniform integer in [low, high].
  std::int64_t between(std::int64_t low, std::int64_t high);
  // A uniform double in [0, 1).
  double unit();
  // True with probability `p`.
  bool chance(double p) { return unit() < p; }

  template <typename T>
  const T& pick(std::span<const T> items) {
    return items[static_cast<std::size_t>(below(items.size()))];
  }
  // An index into `weights`, each chosen in proportion to its weight.
  std::size_t weighted(std::span<const double> weights);

  // A random UUID in its upper-case 8-4-4-4-12 text form.
  std::string uuid();
  // `count` decimal digits.
  std::string digits(int count);

 private:
  std::mt19937_64 _engine;
};

}  // namespace tavrin::tool
