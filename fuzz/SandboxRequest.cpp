// The sandbox answers requests from any client: any bytes as the body of a
// login, a check or an upload (the first byte picks which, with a valid token)
// must get an answer whose document is valid UTF-8 JSON, never a crash, a hang
// or an exception. Uploads are kept in a store of bounded size, so that a
// long run does not grow without end.

#include "SandboxExchanges.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace tavrin::sandbox;

struct Sandbox {
  SandboxOptions options;
  SandboxStore store{":memory:", {std::chrono::milliseconds(0), 1 << 20}};
  DatasetValidator validator{1 << 20, 1 << 16};
  SandboxExchanges exchanges{options, store, validator};
  std::string authorization =
      "Bearer " + nlohmann::json::parse(
                      exchanges.answer(Exchange::login, R"({"authKey":"sandbox-key"})", "").body)
                      .at("access_token")
                      .get<std::string>();
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Sandbox sandbox;
  if (size == 0) return 0;
  const auto exchange = static_cast<Exchange>(data[0] % 3);
  const std::string_view body(reinterpret_cast<const char*>(data + 1), size - 1);
  const Answer answer = sandbox.exchanges.answer(exchange, body, sandbox.authorization);
  if (!answer.body.empty() && nlohmann::json::parse(answer.body, nullptr, false).is_discarded()) {
    std::abort();
  }
  return 0;
}
