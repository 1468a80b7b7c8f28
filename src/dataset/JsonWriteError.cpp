#include <tavrin/error.hpp>

namespace tavrin {

JsonWriteError::JsonWriteError(std::string reason) : _reason(std::move(reason)) {}

const char* JsonWriteError::what() const noexcept { return _reason.c_str(); }

}  // namespace tavrin
