#include "SandboxServer.hpp"

#include "Dashboard.hpp"
#include "RandomHex.hpp"
#include "TlsListener.hpp"
#include "TlsStream.hpp"
#include "collection/StatusResource.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <httplib.h>

#include <poll.h>

#include <algorithm>
#include <csignal>
#include <cstdint>

namespace tavrin::sandbox {

namespace {

using Clock = StopSignal::Clock;

// Marks the responses the exchanges make, so that the error handler only
// fills in those the HTTP layer made itself (404, 400, ...).
constexpr const char* exchangeHeader = "X-Sandbox-Exchange";
// A log line longer than this is cut.
constexpr std::size_t logLineLimit = 2000;
// A dashboard's poll waits at most this long for news (and never longer than
// a request may take).
constexpr std::chrono::seconds longestPoll{25};
// Bounds the permits: requests processed at once, and those stop() releases
// (at most one waits on each open connection).
constexpr std::size_t maxPermits = std::size_t{1} << 20;
// Every answer carries an id under this header, which ends the sandbox's log
// line for the request too, so that a client's report leads to the line.
constexpr const char* requestIdHeader = "X-Request-Id";
// What a dripping answer sends before its body, one byte a second: a minute
// of blanks, which a JSON reader skips.
constexpr std::size_t dripPadding = 60;

// Gives the response a new request id; returns it as the log shows it.
std::string stampRequestId(httplib::Response& response) {
  std::string id = randomHex(8);
  response.set_header(requestIdHeader, id);
  return " (request " + id + ")";
}

void setAnswer(httplib::Response& response, const Answer& answer, std::string_view marker) {
  response.status = answer.status;
  response.set_header(exchangeHeader, std::string(marker));
  if (!answer.body.empty() && !answer.drip) response.set_content(answer.body, "application/json");
}

}  // namespace

// The HTTP layer: reads requests from a connection, routes them to the
// handlers and writes their answers.
class HttpRouter : public httplib::Server {
 public:
  // Serves one request; false when the connection is to end.
  bool serveRequest(TlsStream& stream) {
    bool closed = false;
    const bool served =
        process_request(stream, false, closed,
                        [&stream](httplib::Request& request) { request.ssl = stream.ssl(); });
    return served && !closed && !stream.finished();
  }
};

SandboxServer::SandboxServer(SandboxOptions options)
    : _options(std::move(options)),
      _store(_options.database, {_options.limits.busyTimeout, _options.limits.maxDatabaseSize},
             false, &_stop.flag()),
      _validator(_options.limits.maxDataset, _options.limits.maxDatasetValues,
                 _options.limits.maxInflationRatio, &_stop.flag()),
      _exchanges(_options, _store, _validator),
      _permits(static_cast<std::ptrdiff_t>(
          std::clamp<std::size_t>(_options.limits.threads, 1, maxPermits))),
      _router(std::make_unique<HttpRouter>()) {
  // A client that goes away while its answer is written must not end the
  // process; the write fails and the connection is closed instead.
  std::signal(SIGPIPE, SIG_IGN);
  prepareTls();

  const auto route = [this](Exchange exchange) {
    return [this, exchange](const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& content) {
      this->route(exchange, request, response, content);
    };
  };
  _router->Post("/v4.0/account/tavrinLogin", route(Exchange::login));
  _router->Post("/v4.0/datasets/recordNumber/checkuniqueness", route(Exchange::check));
  _router->Post("/v4.0/datasets/upload", route(Exchange::upload));
  // Any other body is never read: the connection ends after the 404.
  _router->Post(".*", [](const httplib::Request& request, httplib::Response& response,
                         const httplib::ContentReader&) {
    TlsStream::of(request).finish();
    response.status = 404;
  });

  // What the answers tell clients about kept-alive connections.
  _router->set_keep_alive_timeout(_options.limits.idleTimeout.count());
  _router->set_error_handler(httplib::Server::HandlerWithResponse(
      [this](const httplib::Request& request, httplib::Response& response) {
        if (response.has_header(exchangeHeader) || !response.body.empty()) {
          return httplib::Server::HandlerResponse::Unhandled;
        }
        const bool notFound = response.status == 404;
        const auto answer = Answer::error(
            response.status, notFound ? StatusResource::requestNotFound : "request_failed",
            notFound ? "no exchange at " + request.method + " " +
                           platform::printableExcerpt(request.path, 200)
                     : "status " + std::to_string(response.status));
        log(request.method + " " + request.path + " " + std::to_string(answer.status) + " " +
            answer.note + stampRequestId(response));
        response.set_content(answer.body, "application/json");
        return httplib::Server::HandlerResponse::Handled;
      }));
  _router->set_exception_handler([this](const httplib::Request& request,
                                        httplib::Response& response, std::exception_ptr failure) {
    std::string what = "unknown failure";
    try {
      std::rethrow_exception(std::move(failure));
    } catch (const std::exception& error) {
      what = error.what();
    } catch (...) {
    }
    const auto answer = Answer::error(500, "sandbox_failure", what);
    log(request.path + " 500 " + answer.note + stampRequestId(response));
    setAnswer(response, answer, "failure");
  });

  if (_options.dashboard) {
    _dashboard =
        std::make_unique<Dashboard>(*_router, _store, _validator, _exchangeLog, _permits, _stop,
                                    std::min(longestPoll, _options.limits.requestTimeout));
  }

  _listener = std::make_unique<TlsListener>(
      _options, _served.certificate, _served.privateKey, _stop,
      [this](TlsStream& stream) { serveConnection(stream); },
      [this](const std::string& line) { log(line); });
  _port = _listener->port();
}

SandboxServer::~SandboxServer() { stop(); }

void SandboxServer::prepareTls() {
  if (_options.tlsFiles) {
    _tlsFiles = *_options.tlsFiles;
    _served = {{}, readPem(_tlsFiles.certificate), readPem(_tlsFiles.privateKey)};
    return;
  }
  _served = makeCertificates(_options.hostName);
  if (!_options.certificateDirectory.empty()) {
    _tlsFiles = writeTlsFiles(_served, _options.certificateDirectory);
    return;
  }
  // A client needs the authority alone; the key stays in memory.
  _temporaryDirectory.emplace();
  _tlsFiles.authority = _temporaryDirectory->path() / "ca.pem";
  writePem(_tlsFiles.authority, _served.authority);
}

void SandboxServer::start() { _listener->start(); }

HandshakeCounts SandboxServer::handshakes() const { return handshakeCounts(_listener->context()); }

void SandboxServer::stop() {
  _stop.raise();
  _exchangeLog.close();
  // Requests waiting for their turn go on, to answer that the sandbox stops.
  _permits.release(static_cast<std::ptrdiff_t>(
      std::min<std::size_t>(_options.limits.maxConnections, maxPermits)));
  _listener->join();
}

std::string SandboxServer::url() const {
  return "https://" + _options.hostName + ":" + std::to_string(_port);
}

std::string SandboxServer::dashboardUrl() const {
  const std::string& address = _options.bindAddress;
  const bool any = address == "0.0.0.0" || address == "::";
  const std::string host = any                                      ? std::string("127.0.0.1")
                           : address.find(':') != std::string::npos ? "[" + address + "]"
                                                                    : address;
  return "https://" + host + ":" + std::to_string(_port) + "/";
}

std::string SandboxServer::resolve() const {
  return _options.hostName + ":" + std::to_string(_port) + ":" + _options.bindAddress;
}

std::string SandboxServer::clientOptions() const {
  return "--url " + url() + " --resolve " + resolve() + " --ca-file " +
         _tlsFiles.authority.string();
}

void SandboxServer::log(const std::string& line) {
  if (!_options.log) return;
  // Whatever a client sent stays on one line of printable text.
  const std::string shown = platform::printableExcerpt(line, logLineLimit);
  const std::lock_guard lock(_logMutex);
  _options.log(shown);
}

void SandboxServer::serveConnection(TlsStream& stream) {
  const auto& limits = _options.limits;
  while (_router->serveRequest(stream) && stream.awaitRequest(limits.idleTimeout)) {
    stream.beginRequest(Clock::now() + limits.requestTimeout, limits.maxRequestHead);
  }
}

void SandboxServer::route(Exchange exchange, const httplib::Request& request,
                          httplib::Response& response, const httplib::ContentReader& content) {
  const auto& limits = _options.limits;
  const auto began = Clock::now();
  Answer answer;
  if (const auto body = readBody(
          request, content,
          exchange == Exchange::upload ? limits.maxUploadBody : limits.maxSmallBody, answer)) {
    answer = process(exchange, *body, request);
  }
  const bool answered = !answer.drop && !answer.stall;
  log(std::string(exchangeName(exchange)) + " " +
      (answered ? std::to_string(answer.status) : std::string("no answer")) + " " + answer.note +
      stampRequestId(response));
  _exchangeLog.add(
      {.exchange = exchange,
       .status = answered ? std::optional(answer.status) : std::nullopt,
       .milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - began).count(),
       .fault = answer.fault,
       .document = answer.body,
       .note = answer.note});
  TlsStream& stream = TlsStream::of(request);
  if (answer.drop) stream.drop();
  if (answer.stall) stream.holdUntilHangUp();
  setAnswer(response, answer, exchangeName(exchange));
  if (answer.drip) drip(response, stream, std::string(dripPadding, ' ') + answer.body);
}

void SandboxServer::drip(httplib::Response& response, TlsStream& stream, std::string text) {
  response.set_chunked_content_provider(
      "application/json", [this, &stream, text = std::move(text), sent = std::size_t{0}](
                              std::size_t, httplib::DataSink& sink) mutable {
        if (sent == text.size()) {
          sink.done();
          return true;
        }
        // A second between bytes; a client that hangs up, or stop(), ends the answer.
        if (sent > 0 &&
            _stop.wait(stream.socket(), POLLRDHUP, Clock::now() + std::chrono::seconds(1)) !=
                StopSignal::Wait::timedOut) {
          return false;
        }
        return sink.write(text.data() + sent++, 1);
      });
}

std::optional<std::string> SandboxServer::readBody(const httplib::Request& request,
                                                   const httplib::ContentReader& content,
                                                   std::size_t cap, Answer& refusal) {
  TlsStream& stream = TlsStream::of(request);
  const auto refuse = [&](int status, std::string_view title, const std::string& detail) {
    stream.finish();  // the rest of the body is never read
    refusal = Answer::error(status, title, detail);
    return std::nullopt;
  };
  const auto tooLarge = [&] {
    return refuse(413, "payload_too_large",
                  "the request body exceeds " + std::to_string(cap) + " bytes");
  };
  if (request.has_header("Content-Length") &&
      request.get_header_value<std::uint64_t>("Content-Length") > cap) {
    return tooLarge();
  }
  // On the wire the body may take up to twice its size, for chunk framing.
  stream.allow(cap < SIZE_MAX / 4 ? 2 * cap + _options.limits.maxRequestHead : SIZE_MAX);
  std::string body;
  bool over = false;
  const bool complete = content([&](const char* data, std::size_t size) {
    over = size > cap - body.size();
    if (!over) body.append(data, size);
    return !over;
  });
  if (over || stream.overBudget()) return tooLarge();
  if (!complete) {
    return refuse(408, "request_timeout",
                  "the request did not arrive whole within " +
                      std::to_string(_options.limits.requestTimeout.count()) + " s");
  }
  return body;
}

Answer SandboxServer::process(Exchange exchange, const std::string& body,
                              const httplib::Request& request) {
  // Decoding, validating and storing take memory and time: only so many at once.
  _permits.acquire();
  const std::unique_ptr<std::counting_semaphore<>, void (*)(std::counting_semaphore<>*)> permit(
      &_permits, [](std::counting_semaphore<>* permits) { permits->release(); });
  if (_stop.raised()) return Answer::error(503, "sandbox_stopping", "the sandbox is stopping");
  return _exchanges.answer(exchange, body, request.get_header_value("Authorization"));
}

}  // namespace tavrin::sandbox
