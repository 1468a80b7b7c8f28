// The service URL check against a second matcher of the same language written
// by hand: both must give the same answer for every input.

#include "HandWrittenUrlMatcher.hpp"

#include "service/ServiceUrl.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tavrin::testing::HandWrittenUrlMatcher matcher("tavrin");
  const std::string_view url(reinterpret_cast<const char*>(data), size);
  if (tavrin::isServiceUrl(url) != matcher.accepts(url)) std::abort();
  return 0;
}
