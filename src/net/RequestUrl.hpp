#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

// The URL of a request: the base URL parsed into its parts, with its path
// replaced by "/" + path. Empty when the base URL cannot be parsed, which the
// service's URL check lets through only for text in front of the scheme.
std::optional<std::string> requestUrl(const std::string& baseUrl, std::string_view path);

// Whether both URLs parse, with the same scheme, user information, host, port,
// query and fragment: whether a request built from `baseUrl` goes where
// `serviceUrl` names, and carries nothing else.
bool sameDestination(const std::string& baseUrl, const std::string& serviceUrl);

}  // namespace tavrin
