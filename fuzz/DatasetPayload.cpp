// The sandbox validates uploads from any client: any bytes, read as a base64
// payload or as the JSON of a dataset, must give a verdict, never a crash, a
// hang or an exception, within the fuzzing budget of time and memory.

#include "DatasetValidator.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  // A small bound keeps inflation of a crafted stream quick.
  const tavrin::sandbox::DatasetValidator validator(1u << 20);
  (void)validator.decode(text);

  // The JSON steps alone, on whatever the bytes hold: the check of a dataset,
  // and the parse that shows one.
  (void)validator.check(std::string(text));
  nlohmann::json document;
  (void)validator.parse(text, document);
  return 0;
}
