// Error documents come from the network: any bytes must give a recognised
// error or nothing, never a crash, and a recognised one must be one of the
// kinds and messages the code words stand for.

#include "net/errorFromBody.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto error = tavrin::errorFromBody({data, size});
  if (!error) return 0;
  const auto type = error->getErrorType();
  // Every code word maps to one of these two kinds, always with a message.
  if (type != tavrin::ErrorType::invalidInput && type != tavrin::ErrorType::accessDenied) {
    std::abort();
  }
  if (!error->getErrorMessage() || error->getErrorMessage()->empty()) std::abort();
  // Reading the same bytes twice gives the same answer.
  const auto again = tavrin::errorFromBody({data, size});
  if (!again || again->getErrorType() != type ||
      again->getErrorMessage() != error->getErrorMessage()) {
    std::abort();
  }
  return 0;
}
