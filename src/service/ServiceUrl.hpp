#pragma once

#include <string_view>

namespace tavrin {

// Whether a base URL names the scoring service: the secure scheme, one host
// label of word characters or hyphens, ".tavrin.com" and at most a port, at the
// end of the text. The search is not anchored at the start, so text in front
// of the scheme is allowed. Case-sensitive.
bool isServiceUrl(std::string_view url);

}  // namespace tavrin
