#include "net/RequestUrl.hpp"

#include <curl/curl.h>

#include <memory>

namespace tavrin {
namespace {

using ParsedUrl = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

ParsedUrl parse(const std::string& text) {
  ParsedUrl url(curl_url(), &curl_url_cleanup);
  // A NUL would silently cut the text libcurl sees. Any scheme parses here,
  // as URL components would parse it; the transport then refuses everything
  // but https.
  if (!url || text.find('\0') != std::string::npos ||
      curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
    url.reset();
  }
  return url;
}

// One part of a parsed URL; nothing when the URL has none.
std::optional<std::string> part(CURLU* url, CURLUPart which) {
  char* text = nullptr;
  if (curl_url_get(url, which, &text, 0) != CURLUE_OK) return std::nullopt;
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, &curl_free);
  return std::string(owned.get());
}

}  // namespace

bool sameDestination(const std::string& baseUrl, const std::string& serviceUrl) {
  const ParsedUrl base = parse(baseUrl), service = parse(serviceUrl);
  if (!base || !service) return false;
  for (const CURLUPart which :
       {CURLUPART_SCHEME, CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_OPTIONS, CURLUPART_HOST,
        CURLUPART_PORT, CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
    if (part(base.get(), which) != part(service.get(), which)) return false;
  }
  return true;
}

std::optional<std::string> requestUrl(const std::string& baseUrl, std::string_view path) {
  const ParsedUrl url = parse(baseUrl);
  if (!url) return std::nullopt;
  const std::string fullPath = "/" + std::string(path);
  if (curl_url_set(url.get(), CURLUPART_PATH, fullPath.c_str(), 0) != CURLUE_OK) {
    return std::nullopt;
  }
  return part(url.get(), CURLUPART_URL);
}

}  // namespace tavrin
