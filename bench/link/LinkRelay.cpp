#include "LinkRelay.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <deque>
#include <stdexcept>

namespace tavrin::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t chunkSize = 16 << 10;  // a TLS record at most

// Bytes on their way, due at the far end at `due`; no bytes: the end of the stream.
struct Chunk {
  std::vector<char> bytes;
  Clock::time_point due;
};

bool sendAll(int socket, const std::vector<char>& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t n = send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    sent += static_cast<std::size_t>(n);
  }
  return true;
}

// The relay forwards each chunk as soon as it is due; Nagle's algorithm would
// hold small ones back.
void sendAtOnce(int socket) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace

// One direction of a relayed connection: a reader that stamps each chunk with
// the time it is due at the far end, and a writer that delivers it then.
class LinkRelay::Direction {
 public:
  Direction(int from, int to, double bitsPerSecond, Clock::duration oneWay,
            Clock::time_point linkFree)
      : _from(from),
        _to(to),
        _bitsPerSecond(bitsPerSecond),
        _oneWay(oneWay),
        _linkFree(linkFree),
        _reader([this] { read(); }),
        _writer([this] { write(); }) {}

  std::size_t delivered() const { return _delivered; }

 private:
  Clock::duration transmission(std::size_t bytes) const {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(static_cast<double>(bytes) * 8 / _bitsPerSecond));
  }

  void read() {
    for (;;) {
      {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return _queued < queueLimit; });
      }
      std::vector<char> bytes(chunkSize);
      const ssize_t n = recv(_from, bytes.data(), bytes.size(), 0);
      if (n < 0 && errno == EINTR) continue;
      const auto now = Clock::now();
      const std::lock_guard lock(_mutex);
      if (n <= 0) {  // the end, or the connection cut
        _queue.push_back({{}, std::max(now, _linkFree) + _oneWay});
        _changed.notify_all();
        return;
      }
      bytes.resize(static_cast<std::size_t>(n));
      // The link carries one chunk after another at its rate.
      _linkFree = std::max(now, _linkFree) + transmission(bytes.size());
      _queued += bytes.size();
      _queue.push_back({std::move(bytes), _linkFree + _oneWay});
      _changed.notify_all();
    }
  }

  void write() {
    bool broken = false;  // the far side is gone: what follows is dropped
    for (;;) {
      Chunk chunk;
      {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return !_queue.empty(); });
        chunk = std::move(_queue.front());
        _queue.pop_front();
      }
      // The delay is what this relay emulates.
      std::this_thread::sleep_until(chunk.due);
      if (chunk.bytes.empty()) {
        shutdown(_to, SHUT_WR);
        return;
      }
      broken = broken || !sendAll(_to, chunk.bytes);
      if (!broken) _delivered += chunk.bytes.size();
      const std::lock_guard lock(_mutex);
      _queued -= chunk.bytes.size();
      _changed.notify_all();
    }
  }

  int _from, _to;
  double _bitsPerSecond;
  Clock::duration _oneWay;
  std::atomic<std::size_t> _delivered{0};

  std::mutex _mutex;  // guards what follows
  std::condition_variable _changed;
  std::deque<Chunk> _queue;
  std::size_t _queued = 0;
  Clock::time_point _linkFree;

  std::jthread _reader, _writer;  // last: they stop before the rest goes
};

struct LinkRelay::Connection {
  int client, server;
  std::unique_ptr<Direction> up, down;

  Connection(int clientSocket, int serverSocket) : client(clientSocket), server(serverSocket) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    up.reset();
    down.reset();
    close(client);
    close(server);
  }
};

LinkRelay::LinkRelay(LinkProfile profile, int serverPort)
    : _profile(std::move(profile)), _serverPort(serverPort) {
  _listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof address;
  if (_listener < 0 || bind(_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      listen(_listener, SOMAXCONN) != 0 ||
      getsockname(_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    if (_listener >= 0) close(_listener);
    throw std::runtime_error("the link relay cannot listen on loopback");
  }
  _port = ntohs(address.sin_port);
  _acceptor = std::thread([this] { acceptConnections(); });
}

LinkRelay::~LinkRelay() {
  shutdown(_listener, SHUT_RDWR);  // ends accept()
  _acceptor.join();
  close(_listener);
  const std::lock_guard lock(_mutex);
  for (const auto& connection : _connections) {
    shutdown(connection->client, SHUT_RDWR);
    shutdown(connection->server, SHUT_RDWR);
  }
  _connections.clear();
}

LinkRelay::Traffic LinkRelay::traffic() const {
  const std::lock_guard lock(_mutex);
  Traffic traffic{_connections.size(), 0, 0};
  for (const auto& connection : _connections) {
    traffic.bytesUp += connection->up->delivered();
    traffic.bytesDown += connection->down->delivered();
  }
  return traffic;
}

void LinkRelay::acceptConnections() {
  for (;;) {
    const int client = accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client >= 0) {
      startConnection(client);
    } else if (errno != EINTR && errno != ECONNABORTED) {
      return;  // the listener was shut down
    }
  }
}

void LinkRelay::startConnection(int client) {
  const auto accepted = Clock::now();
  const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(_serverPort);
  if (server < 0 ||
      connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    if (server >= 0) close(server);
    close(client);
    return;
  }
  sendAtOnce(client);
  sendAtOnce(server);
  const auto oneWay = std::chrono::duration_cast<Clock::duration>(_profile.roundTrip) / 2;
  auto connection = std::make_unique<Connection>(client, server);
  // Over a real link the client could send nothing before its SYN had been
  // answered, a round trip after it connected.
  connection->up = std::make_unique<Direction>(client, server, _profile.upBitsPerSecond, oneWay,
                                               accepted + _profile.roundTrip);
  connection->down =
      std::make_unique<Direction>(server, client, _profile.downBitsPerSecond, oneWay, accepted);
  const std::lock_guard lock(_mutex);
  _connections.push_back(std::move(connection));
}

}  // namespace tavrin::bench
