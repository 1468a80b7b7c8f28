#pragma once

#include "generator/ProfileGenerator.hpp"

namespace tavrin::bench {

// The phones the whole-run benchmarks collect: the generator's three presets,
// always with the same seed, so that every benchmark sees the same datasets.
inline constexpr tool::Preset presets[] = {tool::Preset::small, tool::Preset::typical,
                                           tool::Preset::large};

inline const char* presetName(tool::Preset preset) {
  return preset == tool::Preset::small     ? "small"
         : preset == tool::Preset::typical ? "typical"
                                           : "large";
}

inline tool::GeneratorOptions phoneOptions(tool::Preset preset) {
  auto options = tool::presetOptions(preset);
  options.seed = 11;
  return options;
}

}  // namespace tavrin::bench
