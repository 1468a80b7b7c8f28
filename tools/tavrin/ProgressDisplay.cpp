#include "ProgressDisplay.hpp"

#include <unistd.h>

namespace tavrin::tool {

namespace {

std::string milliseconds(std::chrono::nanoseconds elapsed) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f ms", static_cast<double>(elapsed.count()) / 1e6);
  return text;
}

}  // namespace

ProgressDisplay::ProgressDisplay(std::FILE* stream)
    : _stream(stream), _live(isatty(fileno(stream)) == 1) {}

ProgressDisplay::~ProgressDisplay() { finish(); }

void ProgressDisplay::show(const std::string& text, bool finished) {
  if (_live) {
    // Back to the start of the line and clear it before writing the new state.
    std::fprintf(_stream, "\r\033[K%s", text.c_str());
    _lineOpen = true;
  } else if (finished) {
    std::fprintf(_stream, "%s\n", text.c_str());
  }
  std::fflush(_stream);
}

void ProgressDisplay::sourceStarted(std::string_view name) {
  show("source " + std::to_string(_sources + 1) + ": " + std::string(name) + " ...", false);
}

void ProgressDisplay::sourceFinished(std::string_view name, std::size_t entries,
                                     std::chrono::nanoseconds elapsed) {
  ++_sources;
  _entries += entries;
  show("source " + std::to_string(_sources) + ": " + std::string(name) + ", " +
           std::to_string(entries) + (entries == 1 ? " entry" : " entries") + " in " +
           milliseconds(elapsed),
       true);
}

void ProgressDisplay::exchangeStarted(std::string_view name) {
  show("exchange " + std::string(name) + " ...", false);
}

void ProgressDisplay::exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) {
  ++_exchanges;
  const std::string answer =
      outcome.status == 0 ? std::string("no answer") : "HTTP " + std::to_string(outcome.status);
  show("exchange " + std::string(name) + ": " + answer + (outcome.succeeded ? "" : ", refused") +
           " in " + milliseconds(outcome.elapsed),
       true);
}

void ProgressDisplay::finish() {
  if (!_lineOpen) return;
  show(std::to_string(_sources) + " sources (" + std::to_string(_entries) + " entries), " +
           std::to_string(_exchanges) + " exchanges",
       true);
  std::fputc('\n', _stream);
  _lineOpen = false;
}

}  // namespace tavrin::tool
