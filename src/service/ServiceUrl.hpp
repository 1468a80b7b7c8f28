#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

// Whether a base URL names the scoring service: the secure scheme, one host
// label of word characters or hyphens, ".tavrin.com" and at most a port, at the
// end of the text. The search is not anchored at the start, so text in front
// of the scheme is allowed. Case-sensitive.
bool isServiceUrl(std::string_view url);

// The part of `url` that the service pattern matched (the scheme, the host and
// any port, as UTF-8), or nothing when it does not match.
std::optional<std::string> matchedServiceUrl(std::string_view url);

}  // namespace tavrin
