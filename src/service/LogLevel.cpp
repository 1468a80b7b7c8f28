#include <tavrin/log.hpp>

namespace tavrin {

const char* logLevelName(LogLevel level) noexcept {
  switch (level) {
    case LogLevel::debug: return "debug";
    case LogLevel::info: return "info";
    case LogLevel::warning: return "warning";
    case LogLevel::error: return "error";
  }
  return "unknown";
}

}  // namespace tavrin
