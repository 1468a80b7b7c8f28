#pragma once

#include "StopSignal.hpp"

#include <httplib.h>
#include <sys/socket.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace tavrin::sandbox {

using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

// The server side of TLS 1.2 and later with a certificate chain and its
// private key, both PEM text. Throws std::runtime_error with OpenSSL's reason.
TlsContext makeServerContext(const std::string& certificateChain, const std::string& privateKey);

// The text form of a socket address ("127.0.0.1", "::1") and its port.
std::pair<std::string, int> describeAddress(const sockaddr_storage& address);

// One accepted TLS connection, as the HTTP layer reads requests from it and
// writes answers to it. Every wait ends at its deadline or when the sandbox
// stops: a request's bytes must all arrive before the request's deadline,
// each read and write waits at most the I/O timeout, and a request may take
// only the bytes it is granted.
class TlsStream final : public httplib::Stream {
 public:
  using Clock = std::chrono::steady_clock;

  // Takes over `socket`, a non-blocking accepted socket from `address`:`port`.
  TlsStream(SSL_CTX* context, int socket, std::string address, int port, const StopSignal& stop,
            std::chrono::seconds ioTimeout);
  // Tells the client the connection ends, and closes it; when input was left
  // unread, first takes what still comes for a moment, as closing with unread
  // input would reset the connection and lose the answer on its way.
  ~TlsStream() override;
  TlsStream(const TlsStream&) = delete;
  TlsStream& operator=(const TlsStream&) = delete;

  // The stream a request arrived on.
  static TlsStream& of(const httplib::Request& request);

  // Begins a request (or, first, the handshake): it must arrive before
  // `deadline`, and at most `budget` bytes of it may be read until allow()
  // grants more.
  void beginRequest(Clock::time_point deadline, std::size_t budget);
  void allow(std::size_t bytes) { _budget = bytes; }
  // Completes the TLS handshake; false when it fails or does not end within
  // the I/O timeout.
  bool handshake();
  // Waits at most `idle` for another request; false when none comes.
  bool awaitRequest(std::chrono::seconds idle);
  // Ends the connection once the current answer is written, with what the
  // client still sends left unread.
  void finish() { _finished = _unreadInput = true; }
  bool finished() const { return _finished; }
  // Whether a request wanted more bytes than it was granted.
  bool overBudget() const { return _overBudget; }
  // Cuts the connection at once, before any answer.
  void drop();
  // Waits until the client hangs up or the sandbox stops.
  void holdUntilHangUp() const;

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* data, size_t size) override;
  ssize_t write(const char* data, size_t size) override;
  void get_remote_ip_and_port(std::string& address, int& port) const override;
  void get_local_ip_and_port(std::string& address, int& port) const override;
  socket_t socket() const override { return _socket; }
  const SSL* ssl() const { return _ssl.get(); }

 private:
  // Repeats a TLS call on the non-blocking socket, waiting for what it
  // needs, until it succeeds (its result), fails (-1) or the connection ends (0).
  template <typename Call>
  int complete(Call call, Clock::time_point deadline) const;
  Clock::time_point readDeadline() const;

  int _socket;
  std::unique_ptr<SSL, decltype(&SSL_free)> _ssl;
  std::string _address;
  int _port;
  const StopSignal& _stop;
  std::chrono::seconds _ioTimeout;
  Clock::time_point _deadline;
  std::size_t _budget = 0;
  bool _finished = false;
  bool _overBudget = false;
  bool _unreadInput = false;
};

}  // namespace tavrin::sandbox
