#include "platform/linux/SystemRandomSource.hpp"

#include <sys/random.h>

#include <cerrno>
#include <random>

namespace tavrin::platform {

namespace {

// 32 unpredictable bits: getrandom, which blocks only until the kernel's pool
// is first seeded; std::random_device where the call is missing (old kernels).
std::uint32_t randomWord() {
  std::uint32_t word = 0;
  for (;;) {
    const auto got = getrandom(&word, sizeof word, 0);
    if (got == static_cast<ssize_t>(sizeof word)) return word;
    if (got < 0 && errno != EINTR) break;
  }
  std::random_device device;
  return static_cast<std::uint32_t>(device());
}

}  // namespace

std::uint32_t SystemRandomSource::uniform(std::uint32_t upperBound) {
  if (upperBound < 2) return 0;
  // Words below 2^32 mod bound would make the low values more likely; drawing
  // again over them leaves a range that is a whole multiple of the bound.
  const std::uint32_t threshold = static_cast<std::uint32_t>(-upperBound) % upperBound;
  for (;;) {
    const std::uint32_t word = randomWord();
    if (word >= threshold) return word % upperBound;
  }
}

}  // namespace tavrin::platform
