#include <tavrin/platform/Platform.hpp>

namespace tavrin::platform {

DeviceProfileError::DeviceProfileError(std::string file, std::string pointer, std::string reason)
    : std::runtime_error(file + ": " + pointer + ": " + reason),
      _file(std::move(file)),
      _pointer(std::move(pointer)),
      _reason(std::move(reason)) {}

}  // namespace tavrin::platform
