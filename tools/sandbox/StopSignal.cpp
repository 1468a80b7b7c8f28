#include "StopSignal.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <stdexcept>

namespace tavrin::sandbox {

StopSignal::StopSignal() : _descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (_descriptor < 0) throw std::runtime_error("cannot make the sandbox's stop signal");
}

StopSignal::~StopSignal() { close(_descriptor); }

void StopSignal::raise() {
  _raised = true;
  // The counter is never read, so the descriptor stays readable for every waiter.
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = write(_descriptor, &one, sizeof one);
}

StopSignal::Wait StopSignal::wait(int socket, short events, Clock::time_point deadline) const {
  pollfd watched[2] = {{socket, events, 0}, {_descriptor, POLLIN, 0}};
  for (;;) {
    if (_raised) return Wait::stopped;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return Wait::timedOut;
    const int ready = poll(watched, 2, static_cast<int>(std::min<long long>(left.count(), 60000)));
    if (ready < 0 && errno != EINTR) return Wait::timedOut;  // cannot wait at all: give up
    if (watched[1].revents != 0) return Wait::stopped;
    if (watched[0].revents != 0) return Wait::ready;
  }
}

}  // namespace tavrin::sandbox
