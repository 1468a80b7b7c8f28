#pragma once

// The objects of the C interface held by the tests, each released with its
// own _free function, so that the leak check sees a _free that frees nothing.

#include <tavrin/tavrin.h>

#include <memory>
#include <string>

namespace tavrin {

struct Released {
  void operator()(tavrin_options* options) const { tavrin_options_free(options); }
  void operator()(tavrin_service* service) const { tavrin_service_free(service); }
  void operator()(tavrin_error* error) const { tavrin_error_free(error); }
  void operator()(char* text) const { tavrin_string_free(text); }
};
template <typename T>
using Owned = std::unique_ptr<T, Released>;

// The phone the tests describe.
inline const std::string realisticPhone =
    TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json";

}  // namespace tavrin
