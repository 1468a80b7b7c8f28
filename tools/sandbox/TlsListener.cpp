#include "TlsListener.hpp"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace tavrin::sandbox {

namespace {

// A listening socket bound to the address and port; -1 when none can be.
int bindSocket(const std::string& address, int port) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return -1;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
  for (const addrinfo* at = found; at != nullptr; at = at->ai_next) {
    const int socket =
        ::socket(at->ai_family, at->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, at->ai_protocol);
    if (socket < 0) continue;
    const int reuse = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    // A wide backlog, so that a burst of clients is not turned away.
    if (bind(socket, at->ai_addr, at->ai_addrlen) == 0 && listen(socket, SOMAXCONN) == 0) {
      return socket;
    }
    close(socket);
  }
  return -1;
}

int boundPort(int socket) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
  return describeAddress(address).second;
}

}  // namespace

TlsListener::TlsListener(const SandboxOptions& options, const std::string& certificateChain,
                         const std::string& privateKey, const StopSignal& stop, Serve serve,
                         std::function<void(const std::string&)> log)
    : _context(makeServerContext(certificateChain, privateKey)),
      _limits(options.limits),
      _noDelay(options.tcpNoDelay),
      _stop(stop),
      _serve(std::move(serve)),
      _log(std::move(log)),
      _socket(bindSocket(options.bindAddress, options.port)) {
  if (_socket < 0) {
    throw std::runtime_error("cannot listen on " + options.bindAddress + ":" +
                             std::to_string(options.port));
  }
  _port = boundPort(_socket);
}

TlsListener::~TlsListener() {
  join();
  close(_socket);
}

void TlsListener::start() {
  if (!_acceptor.joinable()) _acceptor = std::thread([this] { acceptConnections(); });
}

void TlsListener::join() {
  if (_acceptor.joinable()) _acceptor.join();
  std::unique_lock lock(_mutex);
  for (const auto& waiting : _waiting) close(waiting.socket);
  _waiting.clear();
  _closed.wait(lock, [this] { return _open == 0; });
}

void TlsListener::acceptConnections() {
  while (_stop.wait(_socket, POLLIN, expireWaiting()) != StopSignal::Wait::stopped) {
    sockaddr_storage peer{};
    socklen_t length = sizeof peer;
    const int client =
        accept4(_socket, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (client < 0) {
      // Out of descriptors: let those in use end before accepting again.
      if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        _stop.wait(-1, 0, Clock::now() + std::chrono::milliseconds(100));
      }
      continue;
    }
    const auto [address, port] = describeAddress(peer);
    switch (admit(client, address, port)) {
      case Admission::serve: launch(client, address, port); break;
      case Admission::wait: break;
      case Admission::refuse:
        close(client);
        _log("connection from " + address + " refused: " + std::to_string(_limits.maxConnections) +
             " connections are open or waiting");
        break;
    }
  }
}

void TlsListener::launch(int socket, const std::string& address, int port) {
  try {
    std::thread(&TlsListener::serveConnection, this, socket, address, port).detach();
  } catch (const std::system_error&) {
    close(socket);
    release(address);
  }
}

void TlsListener::serveConnection(int socket, const std::string& address, int port) {
  // The HTTP layer writes an answer's head and body in two sends; with
  // Nagle's algorithm on, the body would wait for the client's delayed
  // acknowledgement of the head.
  const int noDelay = _noDelay ? 1 : 0;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
  {
    TlsStream stream(_context.get(), socket, address, port, _stop, _limits.ioTimeout);
    // The handshake counts towards the first request's time.
    stream.beginRequest(Clock::now() + _limits.requestTimeout, _limits.maxRequestHead);
    if (stream.handshake()) _serve(stream);
  }
  release(address);  // the last use of this object: join() may return once it is done
}

TlsListener::Admission TlsListener::admit(int socket, const std::string& address, int port) {
  const std::lock_guard lock(_mutex);
  if (_open >= _limits.maxConnections) return Admission::refuse;
  std::size_t& served = _perAddress[address];
  if (served < _limits.maxConnectionsPerAddress) {
    ++served;
    ++_open;
    return Admission::serve;
  }
  if (_waiting.size() >= _limits.maxConnections) return Admission::refuse;
  _waiting.push_back({socket, address, port, Clock::now() + _limits.requestTimeout});
  return Admission::wait;
}

void TlsListener::release(const std::string& address) {
  std::optional<Waiting> next;
  {
    const std::lock_guard lock(_mutex);
    const auto waiting = std::find_if(_waiting.begin(), _waiting.end(),
                                      [&](const Waiting& w) { return w.address == address; });
    if (waiting != _waiting.end() && !_stop.raised()) {
      next = *waiting;  // the slot passes on, counted as it is
      _waiting.erase(waiting);
    } else {
      if (const auto entry = _perAddress.find(address);
          entry != _perAddress.end() && --entry->second == 0) {
        _perAddress.erase(entry);
      }
      --_open;
      _closed.notify_all();
    }
  }
  if (next) launch(next->socket, next->address, next->port);
}

TlsListener::Clock::time_point TlsListener::expireWaiting() {
  const auto now = Clock::now();
  const std::lock_guard lock(_mutex);
  // The oldest waits longest: those whose time is up are at the front.
  while (!_waiting.empty() && _waiting.front().until <= now) {
    close(_waiting.front().socket);
    _waiting.pop_front();
  }
  return _waiting.empty() ? now + std::chrono::hours(24) : _waiting.front().until;
}

}  // namespace tavrin::sandbox
