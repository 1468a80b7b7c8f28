#pragma once

#include "DatasetValidator.hpp"
#include "ExchangeLog.hpp"
#include "HandshakeCounts.hpp"
#include "PrivateDirectory.hpp"
#include "SandboxExchanges.hpp"
#include "SandboxOptions.hpp"
#include "SandboxStore.hpp"
#include "StopSignal.hpp"
#include "TlsFiles.hpp"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <string>

namespace httplib {
struct Request;
struct Response;
class ContentReader;
}  // namespace httplib

namespace tavrin::sandbox {

class TlsListener;
class TlsStream;
class HttpRouter;
class Dashboard;

// A local stand-in for the scoring service: the three exchanges over HTTPS
// on a loopback port, every upload validated and stored, and scripted faults.
// Every bound it holds clients to is in SandboxOptions::limits.
class SandboxServer {
 public:
  // Makes (or loads) the TLS files, opens the store and binds the port.
  // Throws std::runtime_error when any of these fails.
  explicit SandboxServer(SandboxOptions options);
  // Stops serving and removes a temporary certificate directory.
  ~SandboxServer();
  SandboxServer(const SandboxServer&) = delete;
  SandboxServer& operator=(const SandboxServer&) = delete;

  // Serves on background threads until stop(); returns at once.
  void start();
  // Stops accepting, ends every request in flight at its next wait (a held
  // or slow one at once) and returns once every connection is closed.
  void stop();

  int port() const { return _port; }
  // The base URL a client uses, for example https://api.tavrin.com:41234.
  std::string url() const;
  // The resolve override that sends the host name here: HOST:PORT:ADDRESS.
  std::string resolve() const;
  // The files a client is told of; only the authority when the sandbox made
  // its certificate into a temporary directory (the key stays in memory).
  const TlsFiles& tlsFiles() const { return _tlsFiles; }
  // The line that tells a client how to reach the sandbox, as options of
  // `tavrin collect`: "--url URL --resolve HOST:PORT:ADDRESS --ca-file PEM".
  std::string clientOptions() const;

  // The page that shows the uploads and exchanges, when it is served, at the
  // bound address (which the certificate names too), for a browser that
  // does not resolve the host name here.
  std::string dashboardUrl() const;

  SandboxStore& store() { return _store; }
  ExchangeCounts counts() const { return _exchanges.counts(); }
  // The TLS handshakes of the connections made to the sandbox so far.
  HandshakeCounts handshakes() const;
  // Adds a fault rule after the configured ones.
  void addFault(FaultRule rule) { _exchanges.addFault(std::move(rule)); }

 private:
  // Reads or makes the certificate and key, and writes what a client needs.
  void prepareTls();
  void serveConnection(TlsStream& stream);
  void route(Exchange exchange, const httplib::Request& request, httplib::Response& response,
             const httplib::ContentReader& content);
  std::optional<std::string> readBody(const httplib::Request& request,
                                      const httplib::ContentReader& content, std::size_t cap,
                                      Answer& refusal);
  Answer process(Exchange exchange, const std::string& body, const httplib::Request& request);
  // Sends `text` as the response's body one byte a second, until it is all sent,
  // the client hangs up or the sandbox stops: slow, but never idle.
  void drip(httplib::Response& response, TlsStream& stream, std::string text);
  void log(const std::string& line);

  SandboxOptions _options;
  std::optional<PrivateDirectory> _temporaryDirectory;
  TlsFiles _tlsFiles;
  TlsCertificates _served;  // the certificate and key in use, as PEM text
  StopSignal _stop;
  SandboxStore _store;
  DatasetValidator _validator;
  SandboxExchanges _exchanges;
  // One permit per request processed at once; stop() hands out the rest.
  std::counting_semaphore<> _permits;
  std::unique_ptr<HttpRouter> _router;
  ExchangeLog _exchangeLog;
  std::unique_ptr<Dashboard> _dashboard;
  std::unique_ptr<TlsListener> _listener;
  int _port = 0;
  std::mutex _logMutex;
};

}  // namespace tavrin::sandbox
