#pragma once

#include "SandboxOptions.hpp"
#include "StopSignal.hpp"
#include "TlsStream.hpp"

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace tavrin::sandbox {

// Accepts TLS connections on a bound port and serves each on a thread of its
// own, so that a slow client holds only its own connection. A client address
// has at most so many connections served at once, so that slow clients from
// one address cannot take every slot: more from it wait (no longer than a
// request may take) until one of them closes. Connections beyond the cap in
// all, served or waiting, are closed at once.
class TlsListener {
 public:
  // Serves the requests of one connection whose handshake is done.
  using Serve = std::function<void(TlsStream&)>;

  // Binds the options' address and port (0: a free port) with a certificate
  // chain and its key (PEM text), and holds clients to the options' limits.
  // Throws std::runtime_error when either fails.
  TlsListener(const SandboxOptions& options, const std::string& certificateChain,
              const std::string& privateKey, const StopSignal& stop, Serve serve,
              std::function<void(const std::string&)> log);
  // Stops, when that was not done.
  ~TlsListener();
  TlsListener(const TlsListener&) = delete;
  TlsListener& operator=(const TlsListener&) = delete;

  int port() const { return _port; }
  // The TLS context every connection is served with, and whose counters
  // tell its handshakes.
  SSL_CTX* context() const { return _context.get(); }
  // Accepts on a thread of its own; returns at once.
  void start();
  // Once the stop signal is raised: waits for the accepting thread and for
  // every connection to end.
  void join();

 private:
  using Clock = StopSignal::Clock;
  // An accepted connection waiting for its address's turn.
  struct Waiting {
    int socket;
    std::string address;
    int port;
    Clock::time_point until;
  };
  enum class Admission { serve, wait, refuse };

  void acceptConnections();
  // Serves the connection on a thread of its own, whose slot is counted.
  void launch(int socket, const std::string& address, int port);
  void serveConnection(int socket, const std::string& address, int port);
  // Counts a new connection as served or waiting, when the caps allow.
  Admission admit(int socket, const std::string& address, int port);
  // Hands a closed connection's slot to the next waiting from its address.
  void release(const std::string& address);
  // Closes the waiting connections whose time is up; the next one's time.
  Clock::time_point expireWaiting();

  TlsContext _context;
  const SandboxLimits& _limits;
  bool _noDelay;
  const StopSignal& _stop;
  Serve _serve;
  std::function<void(const std::string&)> _log;
  int _socket = -1;
  int _port = 0;
  std::thread _acceptor;

  std::mutex _mutex;  // guards what follows
  std::condition_variable _closed;
  std::map<std::string, std::size_t> _perAddress;  // served connections
  std::size_t _open = 0;                           // served connections in all
  std::deque<Waiting> _waiting;                    // oldest first
};

}  // namespace tavrin::sandbox
