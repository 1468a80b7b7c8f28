#include "net/CurlTransport.hpp"

#include "net/TransferWatchdog.hpp"

#include <tavrin/error.hpp>

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <new>

namespace tavrin {
namespace {

using CurlList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

// A hostile or broken server must not be able to exhaust memory with an
// endless answer; real answers are a few hundred bytes.
constexpr std::size_t maximumResponseBytes = std::size_t{16} << 20;

bool curlReady() {
  static const bool initialized = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return initialized;
}

bool append(CurlList& list, const std::string& line) {
  curl_slist* extended = curl_slist_append(list.get(), line.c_str());
  if (extended == nullptr) return false;
  (void)list.release();  // the head stays the same node once the list is non-empty
  list.reset(extended);
  return true;
}

// A header line with a line break would let a value smuggle in headers of its own.
bool isSafeHeaderText(const std::string& text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos;
}

struct Transfer {
  std::string body;
  TransferWatchdog watchdog;
  bool stalled = false;
  bool oversized = false;
};

std::size_t receive(char* data, std::size_t size, std::size_t count, void* context) noexcept {
  auto& transfer = *static_cast<Transfer*>(context);
  const std::size_t bytes = size * count;
  if (bytes > maximumResponseBytes - transfer.body.size()) {
    transfer.oversized = true;
    return 0;  // libcurl ends the exchange with a write error
  }
  try {
    transfer.body.append(data, bytes);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return bytes;
}

// Clears the handle's options once an exchange is over, so that none of them
// points into the frame that set it. The connection and the TLS session cache
// stay with the handle.
struct OptionsReset {
  explicit OptionsReset(CURL* easy) : handle(easy) {}
  OptionsReset(const OptionsReset&) = delete;
  OptionsReset& operator=(const OptionsReset&) = delete;
  ~OptionsReset() { curl_easy_reset(handle); }
  CURL* handle;
};

int progress(void* context, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) noexcept {
  auto& transfer = *static_cast<Transfer*>(context);
  if (transfer.watchdog.stillMoving(received + sent, TransferWatchdog::Clock::now())) return 0;
  transfer.stalled = true;
  return 1;  // libcurl aborts the exchange
}

}  // namespace

void CurlTransport::HandleCleanup::operator()(void* handle) const noexcept {
  curl_easy_cleanup(handle);
}

CurlTransport::CurlTransport(const ServiceOptions& options, Connections connections)
    : _caFile(options.caFile),
      _resolve(options.resolve),
      _pinnedPublicKey(options.pinnedPublicKey),
      _requestTimeout(options.requestTimeout),
      _connections(connections) {
  if (_requestTimeout.count() <= 0) {
    throw TavrinError(ErrorType::invalidInput, "Request timeout must be positive");
  }
}

HttpOutcome CurlTransport::send(const HttpRequest& request) {
  if (!curlReady()) return TransportFailure{"libcurl could not be initialised"};
  if (!_handle || _connections == Connections::perRequest) _handle.reset(curl_easy_init());
  if (!_handle) return TransportFailure{"libcurl could not create a handle"};
  CURL* handle = _handle.get();
  const OptionsReset clearedAfterwards{handle};

  CurlList headers(nullptr, &curl_slist_free_all);
  for (const auto& [name, value] : request.headers) {
    if (!isSafeHeaderText(name) || !isSafeHeaderText(value)) {
      return TransportFailure{"a header holds a line break"};
    }
    if (!append(headers, name + ": " + value)) return TransportFailure{"out of memory"};
  }
  // A large upload would otherwise wait for "100 Continue" before sending its body.
  if (!append(headers, "Expect:")) return TransportFailure{"out of memory"};

  CurlList resolve(nullptr, &curl_slist_free_all);
  for (const auto& entry : _resolve) {
    if (!append(resolve, entry)) return TransportFailure{"out of memory"};
  }

  Transfer transfer{{}, TransferWatchdog(_requestTimeout, TransferWatchdog::Clock::now())};
  char errorText[CURL_ERROR_SIZE] = {};
  CURLcode code = CURLE_OK;
  const auto set = [&](CURLoption option, auto value) {
    if (code == CURLE_OK) code = curl_easy_setopt(handle, option, value);
  };

  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_ERRORBUFFER, errorText);
  set(CURLOPT_URL, request.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "https");
  set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
  set(CURLOPT_SSL_VERIFYPEER, 1L);
  set(CURLOPT_SSL_VERIFYHOST, 2L);
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (!_caFile.empty()) set(CURLOPT_CAINFO, _caFile.c_str());
  if (!_pinnedPublicKey.empty()) set(CURLOPT_PINNEDPUBLICKEY, _pinnedPublicKey.c_str());
  if (resolve) set(CURLOPT_RESOLVE, resolve.get());
  set(CURLOPT_HTTPHEADER, headers.get());
  set(CURLOPT_ACCEPT_ENCODING, "");
  if (request.method == "POST") {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDS, request.body.data());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
  } else {
    set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
  }
  set(CURLOPT_WRITEFUNCTION, &receive);
  set(CURLOPT_WRITEDATA, &transfer);
  // The timeout counts idle time, as a phone's request timeout does: the
  // connection phase may take at most the limit, and afterwards the watchdog
  // ends the exchange once no byte has moved for that long.
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(_requestTimeout.count()));
  set(CURLOPT_NOPROGRESS, 0L);
  set(CURLOPT_XFERINFOFUNCTION, &progress);
  set(CURLOPT_XFERINFODATA, &transfer);
  if (code != CURLE_OK) return TransportFailure{curl_easy_strerror(code)};

  code = curl_easy_perform(handle);
  if (transfer.stalled) return TransportFailure{"no data moved within the request timeout"};
  if (transfer.oversized) return TransportFailure{"the response is too large"};
  if (code != CURLE_OK) {
    return TransportFailure{errorText[0] != '\0' ? errorText : curl_easy_strerror(code)};
  }

  long status = 0;
  if (curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK) {
    return TransportFailure{"no status code"};
  }
  return HttpResponse{status, std::move(transfer.body)};
}

}  // namespace tavrin
