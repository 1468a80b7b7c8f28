#pragma once

#include "FaultRule.hpp"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::sandbox {

// One exchange as the sandbox answered it.
struct ExchangeEntry {
  std::uint64_t sequence = 0;  // 1 for the first exchange, then counting up
  std::string time{};          // when it was answered, UTC, ISO 8601 with milliseconds
  Exchange exchange = Exchange::login;
  std::optional<int> status{};  // absent when the connection was dropped or held unanswered
  double milliseconds = 0;      // from the request's headers to its answer
  std::string fault{};          // the fault rule that answered, "" for the normal answer
  std::string document{};       // the body sent (JSON text), "" for a bare answer
  std::string note{};           // what the sandbox's log line says
};

// The latest exchanges in memory, for the dashboard: a bounded window that
// readers can wait on for what comes after the last entry they saw. Safe to
// use from several threads.
class ExchangeLog {
 public:
  using Clock = std::chrono::steady_clock;

  explicit ExchangeLog(std::size_t capacity = 1000) : _capacity(capacity) {}

  // Numbers the entry, stamps its time and wakes the waiting readers.
  void add(ExchangeEntry entry);
  // The kept entries numbered after `sequence`, oldest first; when there is
  // none yet, waits for one until `until` or close().
  std::vector<ExchangeEntry> after(std::uint64_t sequence, Clock::time_point until) const;
  // Ends every wait at once, and every later one too.
  void close();

 private:
  std::size_t _capacity;
  mutable std::mutex _mutex;  // guards what follows
  mutable std::condition_variable _added;
  std::deque<ExchangeEntry> _entries;
  std::uint64_t _last = 0;
  bool _closed = false;
};

}  // namespace tavrin::sandbox
