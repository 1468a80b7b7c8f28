#pragma once

#include <tavrin/error.hpp>

#include <cstdint>
#include <optional>
#include <span>

namespace tavrin {

// Translates the server's error document ({"title": code word, "detail": text})
// into the error it stands for; empty when the body is not a recognised document.
std::optional<TavrinError> errorFromBody(std::span<const std::uint8_t> data);

}  // namespace tavrin
