#include "HandshakeCounts.hpp"

#include <openssl/ssl.h>

namespace tavrin::sandbox {

HandshakeCounts handshakeCounts(SSL_CTX* context) {
  const auto count = [](long value) { return static_cast<std::size_t>(value); };
  const std::size_t completed = count(SSL_CTX_sess_accept_good(context));
  const std::size_t resumed = count(SSL_CTX_sess_hits(context));
  return {count(SSL_CTX_sess_accept(context)), completed - resumed, resumed};
}

}  // namespace tavrin::sandbox
