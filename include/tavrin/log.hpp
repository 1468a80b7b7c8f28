#pragma once

#include <tavrin/export.hpp>

#include <functional>
#include <string_view>

namespace tavrin {

/// How much a log line matters. The raw values are part of the contract.
enum class LogLevel : int {
  debug = 0,    ///< Detail for developers: each data source, each permission prompt.
  info = 1,     ///< The course of a run: exchanges, sizes, the outcome.
  warning = 2,  ///< Something failed that the run may still recover from (a bare 401).
  error = 3,    ///< The run or the login failed, with the reason.
};

/// The lower-case name of a level, for example "warning". Never null.
TAVRIN_EXPORT const char* logLevelName(LogLevel level) noexcept;

/// Receives the library's log lines (see ServiceOptions::setLog). A line is one sentence
/// without a line break. It never holds the key, a token, a record's personal text or a
/// value of the dataset. Called on the thread that runs the operation, one line at a time;
/// it must return quickly and must not call back into the service except cancel().
using LogHandler = std::function<void(LogLevel level, std::string_view line)>;

}  // namespace tavrin
