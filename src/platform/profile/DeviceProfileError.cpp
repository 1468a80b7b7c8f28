#include <tavrin/platform/Platform.hpp>

#include "platform/profile/printableExcerpt.hpp"

namespace tavrin::platform {

namespace {

// The message printed for the error. Its parts come from the profile and
// from the path it was given, so they are made printable and kept short.
std::string message(const std::string& file, const std::string& pointer,
                    const std::string& reason) {
  std::string text = printableExcerpt(file, 1024) + ": ";
  if (!pointer.empty()) text += printableExcerpt(pointer, 256) + ": ";
  return text + printableExcerpt(reason, 512);
}

}  // namespace

DeviceProfileError::DeviceProfileError(std::string file, std::string pointer, std::string reason)
    : std::runtime_error(message(file, pointer, reason)),
      _file(std::move(file)),
      _pointer(std::move(pointer)),
      _reason(std::move(reason)) {}

}  // namespace tavrin::platform
