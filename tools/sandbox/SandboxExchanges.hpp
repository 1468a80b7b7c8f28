#pragma once

#include "DatasetValidator.hpp"
#include "FaultRule.hpp"
#include "SandboxOptions.hpp"
#include "SandboxStore.hpp"

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::sandbox {

// How many requests of each exchange the sandbox received.
struct ExchangeCounts {
  std::size_t logins = 0;
  std::size_t checks = 0;
  std::size_t uploads = 0;
};

// What the sandbox answers to one request, before it goes on the wire.
struct Answer {
  int status = 200;
  std::string body;     // JSON text, always valid UTF-8; empty for a bare answer
  std::string note;     // what the log says about it
  bool drop = false;    // close the connection instead of answering
  bool stall = false;   // answer only once the client has given up
  bool drip = false;    // send the body one byte a second, after a minute of blanks
  std::string fault{};  // the fault rule that made the answer, "" for the normal one

  // The status with the document {"title": TITLE, "detail": DETAIL}.
  static Answer error(int status, std::string_view title, std::string_view detail,
                      std::string note = {});
};

// The protocol of the three exchanges, on request bodies already read: keys
// traded for tokens, record numbers checked, uploads validated and stored, and
// the fault rules that replace the normal answers. Safe to use from several
// threads; never throws for anything a client sends.
class SandboxExchanges {
 public:
  SandboxExchanges(const SandboxOptions& options, SandboxStore& store,
                   const DatasetValidator& validator);

  // The answer to a request of `exchange` with this body and Authorization header.
  Answer answer(Exchange exchange, std::string_view body, std::string_view authorization);

  ExchangeCounts counts() const;
  // Adds a fault rule after the configured ones.
  void addFault(FaultRule rule);

 private:
  // The answer without fault rules.
  Answer normal(Exchange exchange, std::string_view body, std::string_view authorization);
  Answer login(std::string_view body);
  Answer check(std::string_view body);
  Answer upload(std::string_view body);
  bool authorized(std::string_view authorization);
  std::optional<FaultRule> takeFault(Exchange exchange);
  Answer injected(const FaultRule& rule);
  std::string issueToken();
  std::chrono::steady_clock::time_point now() const;

  const SandboxOptions& _options;
  SandboxStore& _store;
  const DatasetValidator& _validator;

  mutable std::mutex _mutex;  // guards what follows
  std::map<std::string, std::chrono::steady_clock::time_point, std::less<>> _tokens;
  std::vector<FaultRule> _faults;
  ExchangeCounts _counts;
};

}  // namespace tavrin::sandbox
