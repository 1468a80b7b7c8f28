#pragma once

#include <tavrin/observer.hpp>

#include <cstdio>
#include <string>

namespace tavrin::tool {

// Shows a collection's progress on a stream (standard error by default): on a
// terminal one line rewritten in place as sources and exchanges go by, else
// one plain line per finished source and exchange, for logs and pipes.
class ProgressDisplay : public CollectionObserver {
 public:
  explicit ProgressDisplay(std::FILE* stream = stderr);
  // Finishes the live line.
  ~ProgressDisplay() override;
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;

  void sourceStarted(std::string_view name) override;
  void sourceFinished(std::string_view name, std::size_t entries,
                      std::chrono::nanoseconds elapsed) override;
  void exchangeStarted(std::string_view name) override;
  void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) override;

  // Ends the live line with a summary, so that later output starts afresh.
  // Does nothing when no line is open.
  void finish();

 private:
  void show(const std::string& text, bool finished);

  std::FILE* _stream;
  bool _live;
  bool _lineOpen = false;
  std::size_t _sources = 0;
  std::size_t _entries = 0;
  std::size_t _exchanges = 0;
};

}  // namespace tavrin::tool
