#pragma once

#include <cstddef>

struct ssl_ctx_st;

namespace tavrin::sandbox {

// What a TLS server has seen of its clients' connections, from OpenSSL's
// counters for its context.
struct HandshakeCounts {
  std::size_t connections = 0;  // handshakes begun: one for every TCP connection a client made
  std::size_t full = 0;         // completed with a full key exchange
  std::size_t resumed = 0;      // completed by resuming an earlier session
  bool operator==(const HandshakeCounts&) const = default;
};

// The counts of the server context `context` since it was made.
HandshakeCounts handshakeCounts(ssl_ctx_st* context);

}  // namespace tavrin::sandbox
