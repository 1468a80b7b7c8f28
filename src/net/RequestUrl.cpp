#include "net/RequestUrl.hpp"

#include <curl/curl.h>

#include <memory>

namespace tavrin {

std::optional<std::string> requestUrl(const std::string& baseUrl, std::string_view path) {
  // A NUL would silently cut the text libcurl sees.
  if (baseUrl.find('\0') != std::string::npos) return std::nullopt;

  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
  if (!url) return std::nullopt;
  // Any scheme parses here, as URL components would parse it; the transport
  // then refuses everything but https.
  if (curl_url_set(url.get(), CURLUPART_URL, baseUrl.c_str(), CURLU_NON_SUPPORT_SCHEME) !=
      CURLUE_OK) {
    return std::nullopt;
  }
  const std::string fullPath = "/" + std::string(path);
  if (curl_url_set(url.get(), CURLUPART_PATH, fullPath.c_str(), 0) != CURLUE_OK) {
    return std::nullopt;
  }

  char* text = nullptr;
  if (curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) return std::nullopt;
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, &curl_free);
  return std::string(owned.get());
}

}  // namespace tavrin
