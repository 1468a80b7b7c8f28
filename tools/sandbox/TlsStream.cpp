#include "TlsStream.hpp"

#include "TlsFiles.hpp"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <tuple>

namespace tavrin::sandbox {

namespace {

using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;

[[noreturn]] void fail(const std::string& step) { throwOpenSslError("cannot serve TLS: " + step); }

Bio memoryOf(const std::string& pem) {
  Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), BIO_free);
  if (!bio) fail("reading PEM text");
  return bio;
}

}  // namespace

std::pair<std::string, int> describeAddress(const sockaddr_storage& address) {
  char text[INET6_ADDRSTRLEN] = "";
  if (address.ss_family == AF_INET) {
    const auto& in = reinterpret_cast<const sockaddr_in&>(address);
    inet_ntop(AF_INET, &in.sin_addr, text, sizeof text);
    return {text, ntohs(in.sin_port)};
  }
  if (address.ss_family == AF_INET6) {
    const auto& in6 = reinterpret_cast<const sockaddr_in6&>(address);
    inet_ntop(AF_INET6, &in6.sin6_addr, text, sizeof text);
    return {text, ntohs(in6.sin6_port)};
  }
  return {"", -1};
}

TlsContext makeServerContext(const std::string& certificateChain, const std::string& privateKey) {
  TlsContext context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  if (!context || SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION) != 1) {
    fail("making a TLS context");
  }
  // The first certificate is the server's; any that follow complete its chain.
  const Bio chain = memoryOf(certificateChain);
  X509* certificate = PEM_read_bio_X509_AUX(chain.get(), nullptr, nullptr, nullptr);
  const bool used =
      certificate != nullptr && SSL_CTX_use_certificate(context.get(), certificate) == 1;
  X509_free(certificate);
  if (!used) fail("the certificate");
  while (X509* link = PEM_read_bio_X509(chain.get(), nullptr, nullptr, nullptr)) {
    if (SSL_CTX_add0_chain_cert(context.get(), link) != 1) {
      X509_free(link);
      fail("the certificate chain");
    }
  }
  ERR_clear_error();  // the end of the chain reads as an error
  const Bio keyText = memoryOf(privateKey);
  EVP_PKEY* key = PEM_read_bio_PrivateKey(keyText.get(), nullptr, nullptr, nullptr);
  const bool keyUsed = key != nullptr && SSL_CTX_use_PrivateKey(context.get(), key) == 1;
  EVP_PKEY_free(key);
  if (!keyUsed || SSL_CTX_check_private_key(context.get()) != 1) fail("the private key");
  return context;
}

TlsStream::TlsStream(SSL_CTX* context, int socket, std::string address, int port,
                     const StopSignal& stop, std::chrono::seconds ioTimeout)
    : _socket(socket),
      _ssl(SSL_new(context), SSL_free),
      _address(std::move(address)),
      _port(port),
      _stop(stop),
      _ioTimeout(ioTimeout) {
  if (!_ssl || SSL_set_fd(_ssl.get(), socket) != 1) _finished = true;
  if (_ssl) SSL_set_app_data(_ssl.get(), this);
}

TlsStream::~TlsStream() {
  // One attempt at a close_notify; a client that does not take it loses nothing.
  if (_ssl && SSL_is_init_finished(_ssl.get())) SSL_shutdown(_ssl.get());
  _ssl.reset();
  if (_unreadInput && shutdown(_socket, SHUT_WR) == 0) {
    constexpr std::size_t lingerBytes = std::size_t{1} << 20;
    const auto until = Clock::now() + std::chrono::seconds(1);
    char sink[16384];
    ssize_t got = 1;
    for (std::size_t taken = 0; taken < lingerBytes && got > 0 &&
                                _stop.wait(_socket, POLLIN, until) == StopSignal::Wait::ready;
         taken += static_cast<std::size_t>(got)) {
      got = recv(_socket, sink, sizeof sink, 0);
    }
  }
  close(_socket);
}

TlsStream& TlsStream::of(const httplib::Request& request) {
  return *static_cast<TlsStream*>(SSL_get_app_data(request.ssl));
}

void TlsStream::beginRequest(Clock::time_point deadline, std::size_t budget) {
  _deadline = deadline;
  _budget = budget;
}

template <typename Call>
int TlsStream::complete(Call call, Clock::time_point deadline) const {
  for (;;) {
    ERR_clear_error();
    const int result = call();
    if (result > 0) return result;
    const int error = SSL_get_error(_ssl.get(), result);
    const short wanted = error == SSL_ERROR_WANT_READ    ? POLLIN
                         : error == SSL_ERROR_WANT_WRITE ? POLLOUT
                                                         : 0;
    if (wanted == 0) return error == SSL_ERROR_ZERO_RETURN ? 0 : -1;
    if (_stop.wait(_socket, wanted, deadline) != StopSignal::Wait::ready) return -1;
  }
}

TlsStream::Clock::time_point TlsStream::readDeadline() const {
  return std::min(_deadline, Clock::now() + _ioTimeout);
}

bool TlsStream::handshake() {
  return !_finished && complete([this] { return SSL_accept(_ssl.get()); }, readDeadline()) == 1;
}

bool TlsStream::awaitRequest(std::chrono::seconds idle) {
  return !_finished &&
         (SSL_pending(_ssl.get()) > 0 ||
          _stop.wait(_socket, POLLIN, Clock::now() + idle) == StopSignal::Wait::ready);
}

void TlsStream::drop() {
  shutdown(_socket, SHUT_RDWR);
  _finished = true;
}

void TlsStream::holdUntilHangUp() const {
  _stop.wait(_socket, POLLRDHUP, Clock::now() + std::chrono::hours(24));
}

bool TlsStream::is_readable() const {
  return SSL_pending(_ssl.get()) > 0 ||
         _stop.wait(_socket, POLLIN, readDeadline()) == StopSignal::Wait::ready;
}

bool TlsStream::is_writable() const {
  return _stop.wait(_socket, POLLOUT, Clock::now() + _ioTimeout) == StopSignal::Wait::ready;
}

ssize_t TlsStream::read(char* data, size_t size) {
  // A request that wants more than it was granted ends the connection.
  if (_finished || _budget == 0) {
    _overBudget = _budget == 0;
    _finished = true;
    return -1;
  }
  const int wanted = static_cast<int>(std::min({size, _budget, std::size_t{INT_MAX}}));
  const int got = complete([&] { return SSL_read(_ssl.get(), data, wanted); }, readDeadline());
  if (got <= 0) {
    _finished = true;
    return got;
  }
  _budget -= static_cast<std::size_t>(got);
  return got;
}

ssize_t TlsStream::write(const char* data, size_t size) {
  const int length = static_cast<int>(std::min(size, std::size_t{INT_MAX}));
  return complete([&] { return SSL_write(_ssl.get(), data, length); }, Clock::now() + _ioTimeout);
}

void TlsStream::get_remote_ip_and_port(std::string& address, int& port) const {
  address = _address;
  port = _port;
}

void TlsStream::get_local_ip_and_port(std::string& address, int& port) const {
  sockaddr_storage local{};
  socklen_t length = sizeof local;
  if (getsockname(_socket, reinterpret_cast<sockaddr*>(&local), &length) != 0) local = {};
  std::tie(address, port) = describeAddress(local);
}

}  // namespace tavrin::sandbox
