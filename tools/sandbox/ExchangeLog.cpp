#include "ExchangeLog.hpp"

#include <algorithm>
#include <ctime>

namespace tavrin::sandbox {

namespace {

std::string utcNow() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  return std::string(text, length) + "." + std::to_string(1000 + milliseconds).substr(1) + "Z";
}

}  // namespace

void ExchangeLog::add(ExchangeEntry entry) {
  entry.time = utcNow();
  {
    const std::lock_guard lock(_mutex);
    entry.sequence = ++_last;
    _entries.push_back(std::move(entry));
    if (_entries.size() > _capacity) _entries.pop_front();
  }
  _added.notify_all();
}

std::vector<ExchangeEntry> ExchangeLog::after(std::uint64_t sequence,
                                              Clock::time_point until) const {
  std::unique_lock lock(_mutex);
  _added.wait_until(lock, until, [&] { return _closed || _last > sequence; });
  const auto first = std::find_if(_entries.begin(), _entries.end(), [sequence](const auto& entry) {
    return entry.sequence > sequence;
  });
  return {first, _entries.end()};
}

void ExchangeLog::close() {
  {
    const std::lock_guard lock(_mutex);
    _closed = true;
  }
  _added.notify_all();
}

}  // namespace tavrin::sandbox
