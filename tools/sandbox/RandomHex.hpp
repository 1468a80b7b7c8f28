#pragma once

#include <cstddef>
#include <string>

namespace tavrin::sandbox {

// `count` bytes from OpenSSL's generator as lower-case hex digits: tokens and
// request ids that no client can guess. Throws std::runtime_error when the
// generator fails.
std::string randomHex(std::size_t count);

}  // namespace tavrin::sandbox
