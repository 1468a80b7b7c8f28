#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tavrin::bench {

// What a mobile link does to the bytes that cross it.
struct LinkProfile {
  std::string name;
  std::chrono::milliseconds roundTrip;
  double upBitsPerSecond;    // client to server
  double downBitsPerSecond;  // server to client
};

// A TCP relay on loopback that stands for a mobile link between a client and a
// server: a client connects to the relay instead of the server, and every
// chunk of bytes crosses after the time the link takes to carry it at the
// direction's rate, behind the chunks before it, plus half the round trip. A
// new connection's first bytes wait one round trip more, for the TCP handshake
// the relay's own kernel answered at once. Each direction queues at most
// `queueLimit` bytes; past that the relay stops reading and TCP's flow control
// holds the sender back, as a full link would.
class LinkRelay {
 public:
  static constexpr std::size_t queueLimit = 256 << 10;

  // Listens on a free port of 127.0.0.1 and relays each connection to
  // `serverPort` there. Throws std::runtime_error when it cannot listen.
  LinkRelay(LinkProfile profile, int serverPort);
  // Stops accepting, cuts the connections still open and waits for its threads.
  ~LinkRelay();
  LinkRelay(const LinkRelay&) = delete;
  LinkRelay& operator=(const LinkRelay&) = delete;

  int port() const { return _port; }

  // What has crossed the link so far: connections made, and payload bytes
  // (TLS records, HTTP and all) delivered in each direction.
  struct Traffic {
    std::size_t connections = 0;
    std::size_t bytesUp = 0, bytesDown = 0;
  };
  Traffic traffic() const;

 private:
  class Direction;
  struct Connection;

  void acceptConnections();
  void startConnection(int client);

  LinkProfile _profile;
  int _serverPort;
  int _listener = -1;
  int _port = 0;
  std::thread _acceptor;

  mutable std::mutex _mutex;  // guards what follows
  Traffic _traffic;
  std::list<std::unique_ptr<Connection>> _connections;
};

}  // namespace tavrin::bench
