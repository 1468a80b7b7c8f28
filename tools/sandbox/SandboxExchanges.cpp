#include "SandboxExchanges.hpp"

#include "BoundedJson.hpp"
#include "RandomHex.hpp"
#include "StopSignal.hpp"
#include "collection/StatusResource.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tavrin::sandbox {

namespace {

using nlohmann::json;

// The code word of a refused dataset: one the client does not know, so that
// it reports the refusal by status alone.
constexpr std::string_view datasetInvalid = "dataset_invalid";
constexpr std::string_view requestMalformed = "request_malformed";

// A request body is one flat object of a few strings; nothing bigger is read.
constexpr JsonLimits requestLimits{4, 64};

// How a record number is named in notes: quoted, cut short.
std::string named(std::string_view record) {
  return "record \"" + platform::printableExcerpt(record, 64) + "\"";
}

Answer malformed(std::string_view detail) { return Answer::error(400, requestMalformed, detail); }

// A store that could not answer: nothing was kept, and the client may try again.
Answer storeFailure(const StoreError& error) {
  switch (error.kind()) {
    case StoreError::Kind::busy: return Answer::error(503, "storage_busy", error.what());
    case StoreError::Kind::full: return Answer::error(507, "storage_full", error.what());
    case StoreError::Kind::failed: break;
  }
  return Answer::error(500, "storage_failed", error.what());
}

// The members of a request body, which must be a JSON object whose listed
// members are all strings; the answer that refuses it otherwise.
std::optional<json> requestObject(std::string_view body, std::initializer_list<const char*> members,
                                  Answer& refusal) {
  json document;
  if (auto problem = parseBoundedJson(body, requestLimits, document)) {
    refusal = malformed("the body: " + *problem);
    return std::nullopt;
  }
  if (!document.is_object()) {
    refusal = malformed("the body must be a JSON object");
    return std::nullopt;
  }
  for (const char* member : members) {
    if (!document.contains(member) || !document[member].is_string()) {
      refusal = malformed(std::string("the member \"") + member + "\" must be a string");
      return std::nullopt;
    }
  }
  return document;
}

}  // namespace

Answer Answer::error(int status, std::string_view title, std::string_view detail,
                     std::string note) {
  // Replacing what is not UTF-8 keeps the document valid whatever the detail echoes.
  std::string document = json{{"title", title}, {"detail", detail}}.dump(
      -1, ' ', false, json::error_handler_t::replace);
  return {status, std::move(document),
          note.empty() ? std::string(title) + ": " + std::string(detail) : std::move(note)};
}

SandboxExchanges::SandboxExchanges(const SandboxOptions& options, SandboxStore& store,
                                   const DatasetValidator& validator)
    : _options(options), _store(store), _validator(validator), _faults(options.faults) {}

Answer SandboxExchanges::answer(Exchange exchange, std::string_view body,
                                std::string_view authorization) {
  {
    const std::lock_guard lock(_mutex);
    ++(exchange == Exchange::login   ? _counts.logins
       : exchange == Exchange::check ? _counts.checks
                                     : _counts.uploads);
  }
  const auto rule = takeFault(exchange);
  if (rule && rule->action != FaultRule::Action::drip) {
    Answer answer = injected(*rule);
    answer.fault = rule->text;
    return answer;
  }
  Answer answer = normal(exchange, body, authorization);
  if (rule) {
    answer.fault = rule->text;
    answer.drip = true;
    answer.note = "fault " + rule->text + ", then " + answer.note;
  }
  return answer;
}

Answer SandboxExchanges::normal(Exchange exchange, std::string_view body,
                                std::string_view authorization) {
  if (exchange == Exchange::login) return login(body);
  if (!authorized(authorization)) return {401, {}, "bare 401: no valid token"};
  try {
    return exchange == Exchange::check ? check(body) : upload(body);
  } catch (const StoreError& error) {
    return storeFailure(error);
  } catch (const WorkStopped& stopped) {
    return Answer::error(503, "sandbox_stopping", stopped.what());
  }
}

ExchangeCounts SandboxExchanges::counts() const {
  const std::lock_guard lock(_mutex);
  return _counts;
}

void SandboxExchanges::addFault(FaultRule rule) {
  const std::lock_guard lock(_mutex);
  _faults.push_back(std::move(rule));
}

std::chrono::steady_clock::time_point SandboxExchanges::now() const {
  return _options.clock ? _options.clock() : std::chrono::steady_clock::now();
}

std::optional<FaultRule> SandboxExchanges::takeFault(Exchange exchange) {
  const std::lock_guard lock(_mutex);
  const auto rule = std::find_if(_faults.begin(), _faults.end(),
                                 [exchange](const FaultRule& r) { return r.matches(exchange); });
  if (rule == _faults.end()) return std::nullopt;
  FaultRule taken = *rule;
  if (rule->times && --*rule->times == 0) _faults.erase(rule);
  return taken;
}

Answer SandboxExchanges::injected(const FaultRule& rule) {
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
    case FaultRule::Action::drip: break;  // the normal answer, which answer() makes
  }
  return {500, {}, note};
}

Answer SandboxExchanges::login(std::string_view body) {
  Answer refusal;
  const auto request = requestObject(body, {"authKey"}, refusal);
  if (!request) return refusal;
  const auto& key = (*request)["authKey"].get_ref<const std::string&>();
  if (std::find(_options.authKeys.begin(), _options.authKeys.end(), key) ==
      _options.authKeys.end()) {
    return Answer::error(401, StatusResource::authKeyInvalid, "Authentication key is invalid");
  }
  return {200, json{{"token_type", _options.tokenType}, {"access_token", issueToken()}}.dump(),
          "token issued"};
}

bool SandboxExchanges::authorized(std::string_view authorization) {
  const std::string prefix = _options.tokenType + " ";
  if (!authorization.starts_with(prefix)) return false;
  const std::lock_guard lock(_mutex);
  const auto token = _tokens.find(authorization.substr(prefix.size()));
  return token != _tokens.end() && now() < token->second;
}

std::string SandboxExchanges::issueToken() {
  std::string token = randomHex(24);
  const auto issued = now();
  const std::lock_guard lock(_mutex);
  std::erase_if(_tokens, [issued](const auto& entry) { return entry.second <= issued; });
  _tokens.emplace(token, issued + _options.tokenLifetime);
  return token;
}

Answer SandboxExchanges::check(std::string_view body) {
  Answer refusal;
  const auto request = requestObject(body, {"recordNumber"}, refusal);
  if (!request) return refusal;
  const auto& record = (*request)["recordNumber"].get_ref<const std::string&>();
  if (record.empty()) {
    return Answer::error(400, StatusResource::recordNumberRequired, "Record number is required");
  }
  const bool unique = !_store.isTaken(record);
  return {200, unique ? "true" : "false", named(record) + (unique ? " is unique" : " is taken")};
}

Answer SandboxExchanges::upload(std::string_view body) {
  Answer refusal;
  const auto request = requestObject(body, {"recordNumber", "data"}, refusal);
  if (!request) return refusal;
  const auto& record = (*request)["recordNumber"].get_ref<const std::string&>();
  const auto& data = (*request)["data"].get_ref<const std::string&>();
  const auto notUnique = [&] {
    return Answer::error(400, StatusResource::recordNumberNotUnique, "Record number is not unique",
                         named(record) + ": record_number_not_unique");
  };
  if (record.empty()) {
    return Answer::error(400, StatusResource::recordNumberRequired, "Record number is required");
  }
  if (_store.isTaken(record)) return notUnique();
  const DecodedPayload decoded = _validator.decode(data);
  const auto id = _store.record(record, data, decoded);
  if (!id) return notUnique();
  if (!decoded.valid()) {
    return Answer::error(
        400, datasetInvalid, *decoded.problem,
        named(record) + ": " + std::string(datasetInvalid) + ": " + *decoded.problem);
  }
  return {
      200,
      json("accepted record " + json(record).dump() + " as upload " + std::to_string(*id)).dump(),
      named(record) + " accepted as upload " + std::to_string(*id) + " (" +
          std::to_string(decoded.jsonSize) + " bytes of JSON)"};
}

}  // namespace tavrin::sandbox
