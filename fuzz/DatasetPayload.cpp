// The sandbox validates uploads from any client: any bytes, read as a base64
// payload or as the JSON of a dataset, must give a verdict, never a crash, a
// hang or an exception.

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

  // The structure check alone, on whatever JSON the bytes hold; a document too
  // deep for the parser's own limits is not a dataset anyway.
  const auto document = nlohmann::json::parse(text, nullptr, false);
  if (!document.is_discarded()) {
    (void)tavrin::sandbox::DatasetValidator::validate(document);
    (void)tavrin::sandbox::DatasetValidator::countSections(document);
  }
  return 0;
}
