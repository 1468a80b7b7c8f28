#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::testdata {

using Bytes = std::vector<std::uint8_t>;

inline Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// Bytes no compressor can shrink; the same for the same seed.
inline Bytes randomBytes(std::size_t size, std::uint32_t seed = 1) {
  std::mt19937 engine(seed);
  Bytes bytes(size);
  for (auto& value : bytes) value = static_cast<std::uint8_t>(engine());
  return bytes;
}

// Text shaped like dataset JSON rows, which compresses well but not trivially.
inline Bytes jsonLikeBytes(std::size_t size) {
  std::mt19937 engine(1);
  std::string text = "[";
  while (text.size() < size) {
    const auto id = engine();
    text += "[\"" + std::to_string(id) + ":ABPerson\"," + std::to_string(id % 7) +
            (id % 3 ? ",null," : ",true,") + std::to_string(1600000000 + id % 99999) + ".25],";
  }
  text.resize(size);
  return bytesOf(text);
}

// One case of a table of inputs, and the name generator that names it.
struct NamedBytes {
  const char* name;
  Bytes bytes;
};
inline constexpr auto caseName = [](const auto& test) { return std::string(test.param.name); };

}  // namespace tavrin::testdata
