#include "SandboxServer.hpp"

#include "collection/StatusResource.hpp"

#include <httplib.h>
#include <openssl/rand.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace tavrin::sandbox {

namespace {

using nlohmann::json;

// Marks the responses the exchanges make, so that the error handler only
// fills in those the HTTP layer made itself (404, 413, ...).
constexpr const char* exchangeHeader = "X-Sandbox-Exchange";
// The code word of a refused dataset: one the client does not know, so that
// it reports the refusal by status alone.
constexpr std::string_view datasetInvalid = "dataset_invalid";
constexpr std::string_view requestMalformed = "request_malformed";

// Every answer carries an id under this header, which the sandbox's log
// names too, so that a client's report can be matched to the log line.
constexpr const char* requestIdHeader = "X-Request-Id";
// What a dripping answer sends before its body, one byte a second: a minute
// of blanks, which a JSON reader skips.
constexpr std::size_t dripPadding = 60;

std::string errorDocument(std::string_view title, std::string_view detail) {
  return json{{"title", title}, {"detail", detail}}.dump();
}

// `count` random bytes as lower-case hex digits.
std::string randomHex(std::size_t count) {
  std::vector<unsigned char> random(count);
  if (RAND_bytes(random.data(), static_cast<int>(count)) != 1) {
    throw std::runtime_error("no random bytes");
  }
  static constexpr char hex[] = "0123456789abcdef";
  std::string text;
  for (unsigned char byte : random) {
    text += hex[byte >> 4];
    text += hex[byte & 0xF];
  }
  return text;
}

// Gives the response a new request id, once; returns it.
std::string stampRequestId(httplib::Response& response) {
  if (!response.has_header(requestIdHeader)) response.set_header(requestIdHeader, randomHex(8));
  return response.get_header_value(requestIdHeader);
}

}  // namespace

struct SandboxServer::Answer {
  int status = 200;
  std::string body;  // JSON text; empty for a bare answer
  std::string note;  // what the log says about it
  bool drop = false;
  bool stall = false;
  bool drip = false;

  static Answer error(int status, std::string_view title, std::string_view detail,
                      std::string note = {}) {
    return {status, errorDocument(title, detail),
            note.empty() ? std::string(title) + ": " + std::string(detail) : std::move(note)};
  }
  static Answer malformed(std::string_view detail) { return error(400, requestMalformed, detail); }
};

SandboxServer::OwnedDirectory::~OwnedDirectory() {
  if (!path.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
}

TlsFiles SandboxServer::prepareTlsFiles(const SandboxOptions& options, OwnedDirectory& temporary) {
  if (options.tlsFiles) return *options.tlsFiles;
  std::filesystem::path directory = options.certificateDirectory;
  if (directory.empty()) {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tavrin-sandbox-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("cannot make a temporary directory for the sandbox's certificates");
    }
    temporary.path = directory = pattern;
  }
  return makeTlsFiles(directory, options.hostName);
}

SandboxServer::SandboxServer(SandboxOptions options)
    : _options(std::move(options)),
      _tlsFiles(prepareTlsFiles(_options, _temporaryDirectory)),
      _store(_options.database),
      _validator(_options.maxDatasetSize),
      _faults(_options.faults) {
  // A client that goes away while its answer is written must not end the
  // process; the write fails and the connection is closed instead.
  std::signal(SIGPIPE, SIG_IGN);

  _server = std::make_unique<httplib::SSLServer>(_tlsFiles.certificate.c_str(),
                                                 _tlsFiles.privateKey.c_str());
  if (!_server->is_valid()) {
    throw std::runtime_error("cannot serve TLS with " + _tlsFiles.certificate.string() + " and " +
                             _tlsFiles.privateKey.string());
  }
  const auto threads = std::max<std::size_t>(_options.threads, 1);
  _server->new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
  _server->set_read_timeout(_options.ioTimeout);
  _server->set_write_timeout(_options.ioTimeout);
  _server->set_keep_alive_timeout(_options.idleTimeout.count());
  _server->set_payload_max_length(_options.maxBodySize);

  const auto route = [this](Exchange exchange) {
    return [this, exchange](const httplib::Request& request, httplib::Response& response) {
      serve(exchange, request, response);
    };
  };
  _server->Post("/v4.0/account/tavrinLogin", route(Exchange::login));
  _server->Post("/v4.0/datasets/recordNumber/checkuniqueness", route(Exchange::check));
  _server->Post("/v4.0/datasets/upload", route(Exchange::upload));

  _server->set_error_handler(httplib::Server::HandlerWithResponse(
      [this](const httplib::Request& request, httplib::Response& response) {
        if (response.has_header(exchangeHeader)) return httplib::Server::HandlerResponse::Unhandled;
        std::string title = "request_failed";
        std::string detail = "status " + std::to_string(response.status);
        if (response.status == 404) {
          title = StatusResource::requestNotFound;
          detail = "no exchange at " + request.method + " " + request.path;
        } else if (response.status == 413) {
          title = "payload_too_large";
          detail = "the request body exceeds " + std::to_string(_options.maxBodySize) + " bytes";
        }
        log(request.method + " " + request.path + " " + std::to_string(response.status) + " " +
            title + ": " + detail + " (request " + stampRequestId(response) + ")");
        response.set_content(errorDocument(title, detail), "application/json");
        return httplib::Server::HandlerResponse::Handled;
      }));
  _server->set_exception_handler([this](const httplib::Request& request,
                                        httplib::Response& response, std::exception_ptr failure) {
    std::string what = "unknown failure";
    try {
      std::rethrow_exception(std::move(failure));
    } catch (const std::exception& error) {
      what = error.what();
    } catch (...) {
    }
    log(request.path + " 500 sandbox failure: " + what + " (request " + stampRequestId(response) +
        ")");
    response.status = 500;
    response.set_header(exchangeHeader, "failure");
    response.set_content(errorDocument("sandbox_failure", what), "application/json");
  });

  // The library listens with a backlog of 5, which drops the connections of
  // a burst of clients; the listening socket is noted here to widen it.
  _server->set_socket_options([this](socket_t socket) {
    httplib::default_socket_options(socket);
    _listeningSocket = socket;
  });
  _port = _options.port == 0 ? _server->bind_to_any_port(_options.bindAddress)
          : _server->bind_to_port(_options.bindAddress, _options.port) ? _options.port
                                                                       : -1;
  if (_port <= 0) {
    throw std::runtime_error("cannot listen on " + _options.bindAddress + ":" +
                             std::to_string(_options.port));
  }
  listen(_listeningSocket, SOMAXCONN);
}

SandboxServer::~SandboxServer() { stop(); }

void SandboxServer::start() {
  if (_thread.joinable()) return;
  _thread = std::thread([this] {
    _server->listen_after_bind();
    _listenEnded = true;
  });
  // The port already accepts connections; wait only until the loop runs, so
  // that stop() can end it. This takes a few microseconds.
  while (!_server->is_running() && !_listenEnded) std::this_thread::yield();
}

void SandboxServer::stop() {
  _stopping = true;
  _server->stop();
  if (_thread.joinable()) _thread.join();
}

std::string SandboxServer::url() const {
  return "https://" + _options.hostName + ":" + std::to_string(_port);
}

std::string SandboxServer::resolve() const {
  return _options.hostName + ":" + std::to_string(_port) + ":" + _options.bindAddress;
}

std::string SandboxServer::clientOptions() const {
  return "--url " + url() + " --resolve " + resolve() + " --ca-file " +
         _tlsFiles.authority.string();
}

ExchangeCounts SandboxServer::counts() const {
  const std::lock_guard lock(_mutex);
  return _counts;
}

void SandboxServer::addFault(FaultRule rule) {
  const std::lock_guard lock(_mutex);
  _faults.push_back(std::move(rule));
}

std::chrono::steady_clock::time_point SandboxServer::now() const {
  return _options.clock ? _options.clock() : std::chrono::steady_clock::now();
}

void SandboxServer::log(const std::string& line) {
  if (!_options.log) return;
  const std::lock_guard lock(_logMutex);
  _options.log(line);
}

void SandboxServer::serve(Exchange exchange, const httplib::Request& request,
                          httplib::Response& response) {
  {
    const std::lock_guard lock(_mutex);
    ++(exchange == Exchange::login   ? _counts.logins
       : exchange == Exchange::check ? _counts.checks
                                     : _counts.uploads);
  }
  Answer answer;
  const auto rule = takeFault(exchange);
  const bool dripping = rule && rule->action == FaultRule::Action::drip;
  if (rule && !dripping) {
    answer = injected(*rule, request);
  } else if (exchange == Exchange::login) {
    answer = login(request);
  } else if (!authorized(request)) {
    answer = {401, {}, "bare 401: no valid token"};
  } else {
    answer = exchange == Exchange::check ? check(request) : upload(request);
  }
  if (dripping) {
    answer.drip = true;
    answer.note = "fault " + rule->text + ", then " + answer.note;
  }
  log(std::string(exchangeName(exchange)) + " " +
      (answer.drop || answer.stall ? std::string("no answer") : std::to_string(answer.status)) +
      " " + answer.note + " (request " + stampRequestId(response) + ")");

  const int socket = request.ssl ? SSL_get_fd(request.ssl) : -1;
  if (answer.drop && socket >= 0) {
    // Nothing has been written yet; shutting the socket down ends the
    // connection before any answer, and the write that follows fails.
    shutdown(socket, SHUT_RDWR);
  }
  if (answer.stall && socket >= 0) {
    // Hold the request until the client hangs up or the sandbox stops.
    pollfd hangUp{socket, POLLRDHUP, 0};
    while (!_stopping && poll(&hangUp, 1, 100) == 0) {
    }
  }
  response.status = answer.status;
  response.set_header(exchangeHeader, std::string(exchangeName(exchange)));
  if (answer.drip) {
    drip(response, std::string(dripPadding, ' ') + answer.body);
  } else if (!answer.body.empty()) {
    response.set_content(answer.body, "application/json");
  }
}

void SandboxServer::drip(httplib::Response& response, std::string text) {
  response.set_chunked_content_provider(
      "application/json", [this, text = std::move(text), sent = std::size_t{0}](
                              std::size_t, httplib::DataSink& sink) mutable {
        // A second between bytes, in slices, so that stop() is not held up.
        for (int slice = 0; sent > 0 && slice < 10 && !_stopping; ++slice) {
          std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        if (sent == text.size() || _stopping) {
          sink.done();
          return true;
        }
        return sink.write(text.data() + sent++, 1);
      });
}

std::optional<FaultRule> SandboxServer::takeFault(Exchange exchange) {
  const std::lock_guard lock(_mutex);
  const auto rule = std::find_if(_faults.begin(), _faults.end(),
                                 [exchange](const FaultRule& r) { return r.matches(exchange); });
  if (rule == _faults.end()) return std::nullopt;
  FaultRule taken = *rule;
  if (rule->times && --*rule->times == 0) _faults.erase(rule);
  return taken;
}

SandboxServer::Answer SandboxServer::injected(const FaultRule& rule, const httplib::Request&) {
  const std::string note = "fault " + rule.text;
  switch (rule.action) {
    case FaultRule::Action::status: return {rule.status, {}, note};
    case FaultRule::Action::error: return Answer::error(rule.status, rule.title, rule.detail, note);
    case FaultRule::Action::body: return {rule.status, rule.body, note};
    case FaultRule::Action::numericMember:
      return {200,
              json{{"token_type", _options.tokenType},
                   {"access_token", issueToken()},
                   {"expires_in", _options.tokenLifetime.count()}}
                  .dump(),
              note};
    case FaultRule::Action::drop: return {500, {}, note, true, false};
    case FaultRule::Action::stall: return {503, {}, note, false, true};
    case FaultRule::Action::drip: break;  // the normal answer, which serve() makes
  }
  return {500, {}, note};
}

namespace {

// The request's body as a JSON object whose listed members are all strings.
std::optional<json> requestObject(const httplib::Request& request,
                                  std::initializer_list<const char*> members,
                                  std::string& problem) {
  json body = json::parse(request.body, nullptr, false);
  if (body.is_discarded() || !body.is_object()) {
    problem = "the body must be a JSON object";
    return std::nullopt;
  }
  for (const char* member : members) {
    if (!body.contains(member) || !body[member].is_string()) {
      problem = std::string("the member \"") + member + "\" must be a string";
      return std::nullopt;
    }
  }
  return body;
}

}  // namespace

SandboxServer::Answer SandboxServer::login(const httplib::Request& request) {
  std::string problem;
  const auto body = requestObject(request, {"authKey"}, problem);
  if (!body) return Answer::malformed(problem);
  const auto& key = (*body)["authKey"].get_ref<const std::string&>();
  if (std::find(_options.authKeys.begin(), _options.authKeys.end(), key) ==
      _options.authKeys.end()) {
    return Answer::error(401, StatusResource::authKeyInvalid, "Authentication key is invalid");
  }
  return {200, json{{"token_type", _options.tokenType}, {"access_token", issueToken()}}.dump(),
          "token issued"};
}

bool SandboxServer::authorized(const httplib::Request& request) {
  const std::string header = request.get_header_value("Authorization");
  const std::string prefix = _options.tokenType + " ";
  if (!header.starts_with(prefix)) return false;
  const std::lock_guard lock(_mutex);
  const auto token = _tokens.find(header.substr(prefix.size()));
  return token != _tokens.end() && now() < token->second;
}

std::string SandboxServer::issueToken() {
  std::string token = randomHex(24);
  const auto issued = now();
  const std::lock_guard lock(_mutex);
  std::erase_if(_tokens, [issued](const auto& entry) { return entry.second <= issued; });
  _tokens.emplace(token, issued + _options.tokenLifetime);
  return token;
}

SandboxServer::Answer SandboxServer::check(const httplib::Request& request) {
  std::string problem;
  const auto body = requestObject(request, {"recordNumber"}, problem);
  if (!body) return Answer::malformed(problem);
  const auto& record = (*body)["recordNumber"].get_ref<const std::string&>();
  if (record.empty()) {
    return Answer::error(400, StatusResource::recordNumberRequired, "Record number is required");
  }
  const bool unique = !_store.isTaken(record);
  return {200, unique ? "true" : "false",
          "record " + json(record).dump() + (unique ? " is unique" : " is taken")};
}

SandboxServer::Answer SandboxServer::upload(const httplib::Request& request) {
  std::string problem;
  const auto body = requestObject(request, {"recordNumber", "data"}, problem);
  if (!body) return Answer::malformed(problem);
  const auto& record = (*body)["recordNumber"].get_ref<const std::string&>();
  const auto& data = (*body)["data"].get_ref<const std::string&>();
  const std::string named = "record " + json(record).dump();
  const auto notUnique = [&] {
    return Answer::error(400, StatusResource::recordNumberNotUnique, "Record number is not unique",
                         named + ": record_number_not_unique");
  };
  if (record.empty()) {
    return Answer::error(400, StatusResource::recordNumberRequired, "Record number is required");
  }
  if (_store.isTaken(record)) return notUnique();
  const DecodedPayload decoded = _validator.decode(data);
  const auto id = _store.record(record, data, decoded);
  if (!id) return notUnique();
  if (!decoded.valid()) {
    return Answer::error(400, datasetInvalid, *decoded.problem,
                         named + ": " + std::string(datasetInvalid) + ": " + *decoded.problem);
  }
  return {200, json("accepted " + named + " as upload " + std::to_string(*id)).dump(),
          named + " accepted as upload " + std::to_string(*id) + " (" +
              std::to_string(decoded.jsonSize) + " bytes of JSON)"};
}

}  // namespace tavrin::sandbox
