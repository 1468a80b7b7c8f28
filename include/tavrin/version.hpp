#pragma once

#include <tavrin/export.hpp>

extern "C" {
/// The library's what-string: "@(#)PROGRAM:tavrinsdk  PROJECT:tavrinsdk-1\n", zero-terminated.
TAVRIN_EXPORT extern const unsigned char tavrinsdkVersionString[];
/// The library's version number, 1.0.
TAVRIN_EXPORT extern const double tavrinsdkVersionNumber;
}
