#pragma once

#include <tavrin/export.hpp>
#include <tavrin/log.hpp>
#include <tavrin/observer.hpp>
#include <tavrin/platform/Platform.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tavrin {

/// How a TavrinService reaches its device and its server, how long it may take and
/// whom it tells what it does. Every setting has a default that gives the behaviour
/// of TavrinService(url, authKey). A value: copies are independent, and a moved-from
/// object keeps its settings. The settings live behind a pointer, so later 1.x
/// releases add settings without changing the object's size or layout. Setters
/// return the object, so that they chain. Not synchronised: one thread at a time.
class TAVRIN_EXPORT ServiceOptions {
 public:
  /// Every setting at its default.
  ServiceOptions();
  ~ServiceOptions();
  /// A copy with the same settings.
  ServiceOptions(const ServiceOptions& other);
  /// Takes the settings of `other`.
  ServiceOptions& operator=(const ServiceOptions& other);

  /// The device to read: any Platform implementation; the service shares ownership of
  /// it. Default (null): the Linux machine the library runs on.
  ServiceOptions& setPlatform(std::shared_ptr<platform::Platform> platform);
  /// The device to read; null for the Linux machine the library runs on.
  const std::shared_ptr<platform::Platform>& platform() const noexcept;

  /// Decides access to the personal data stores of the default Linux platform, whose
  /// system asks the user nothing (see platform::ConsentCallback). Ignored when a
  /// platform is set. Default (empty): every store not yet answered is denied.
  ServiceOptions& setConsent(platform::ConsentCallback consent);
  /// The consent callback; empty for none.
  const platform::ConsentCallback& consent() const noexcept;

  /// A PEM file of CA certificates trusted instead of the system store. Default
  /// (empty): the system store. Server certificates are always verified.
  ServiceOptions& setCaFile(std::string path);
  /// The CA file; empty for the system store.
  const std::string& caFile() const noexcept;

  /// Addresses that replace name resolution, each "HOST:PORT:ADDRESS" as libcurl's
  /// resolve list takes them, e.g. "api.tavrin.com:443:127.0.0.1". Default: none.
  ServiceOptions& setResolve(std::vector<std::string> entries);
  /// The resolve entries.
  const std::vector<std::string>& resolve() const noexcept;

  /// The server's public key to pin, as libcurl takes it: a PEM or DER file path, or
  /// "sha256//" followed by base64 hashes separated by ";". Default (empty): no pinning.
  ServiceOptions& setPinnedPublicKey(std::string pin);
  /// The pinned key; empty for none.
  const std::string& pinnedPublicKey() const noexcept;

  /// How long a request may stay idle (no byte sent or received, connecting included)
  /// before it fails with connectionFailed. A slow transfer that keeps moving never times
  /// out. Must be positive: the service's constructor throws invalidInput otherwise.
  /// Default: 60 seconds.
  ServiceOptions& setRequestTimeout(std::chrono::milliseconds timeout);
  /// The idle limit of a request.
  std::chrono::milliseconds requestTimeout() const noexcept;

  /// The longest one collectData, one previewDataset or the constructor's login may take
  /// in all: prompts, sources, compression and every exchange. When it passes, the run
  /// stops at its next safe point (within a second for a stalled or dripping server) and
  /// throws TavrinError connectionFailed "Deadline exceeded". Must not be negative: the
  /// constructor throws invalidInput otherwise. Default (zero): no deadline.
  ServiceOptions& setDeadline(std::chrono::milliseconds deadline);
  /// The deadline of a run; zero for none.
  std::chrono::milliseconds deadline() const noexcept;

  /// Told how each run and each exchange with the server progresses (see
  /// CollectionObserver). Default (null): nobody. The service shares ownership of it.
  ServiceOptions& setObserver(std::shared_ptr<CollectionObserver> observer);
  /// The observer; null for none.
  const std::shared_ptr<CollectionObserver>& observer() const noexcept;

  /// Receives a line for each exchange (status, duration), each source (row count),
  /// the dataset's sizes, each new login and each failure with its reason (see
  /// LogHandler). Default (empty): the library logs nothing.
  ServiceOptions& setLog(LogHandler log);
  /// The log handler; empty for none.
  const LogHandler& log() const noexcept;

  /// A product token of the host, such as "ShopApp/2.3", put in front of the library's
  /// own "tavrinsdk/VERSION (SYSTEM VERSION; MACHINE)" in every request's User-Agent.
  /// Printable ASCII only: the constructor throws invalidInput otherwise. Default
  /// (empty): the library's token alone.
  ServiceOptions& setUserAgent(std::string product);
  /// The host's product token; empty for none.
  const std::string& userAgent() const noexcept;

 private:
  struct Settings;
  std::unique_ptr<Settings> _settings;
};

}  // namespace tavrin
