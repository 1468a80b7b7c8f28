#pragma once

#include <tavrin/observer.hpp>
#include <tavrin/platform/Platform.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tavrin {

/// How a TavrinService reaches its device and its server. Every field has a
/// default that gives the behaviour of TavrinService(url, authKey).
struct ServiceOptions {
  /// The device to read. Default (null): the Linux machine the library runs on.
  /// Any Platform implementation; the service shares ownership of it.
  std::shared_ptr<platform::Platform> platform;

  /// A PEM file of CA certificates trusted instead of the system store.
  /// Default (empty): the system store. Server certificates are always verified.
  std::string caFile;

  /// Addresses that replace name resolution, each "HOST:PORT:ADDRESS" as libcurl's
  /// resolve list takes them, e.g. "api.tavrin.com:443:127.0.0.1". Default: none.
  std::vector<std::string> resolve;

  /// The server's public key to pin, as libcurl takes it: a PEM or DER file path,
  /// or "sha256//" followed by base64 hashes separated by ";". Default (empty): no pinning.
  std::string pinnedPublicKey;

  /// How long a request may stay idle (no byte sent or received, connecting
  /// included) before it fails with connectionFailed. A slow transfer that keeps
  /// moving never times out. Must be positive. Default: 60 seconds.
  std::chrono::milliseconds requestTimeout{60000};

  /// Told how each collection run and each exchange with the server progresses
  /// (see CollectionObserver). Default (null): nobody. The service shares
  /// ownership of it.
  std::shared_ptr<CollectionObserver> observer;
};

}  // namespace tavrin
