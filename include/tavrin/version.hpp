#pragma once

#include <tavrin/export.hpp>

/// The major version of these headers: releases with the same major version keep
/// the binary interface of libtavrinsdk.so.1.
#define TAVRIN_VERSION_MAJOR 1
/// The minor version: it grows when a release adds to the interface.
#define TAVRIN_VERSION_MINOR 0
/// The patch version: it grows with every release that only fixes faults.
#define TAVRIN_VERSION_PATCH 0

extern "C" {
/// The library's what-string: "@(#)PROGRAM:tavrinsdk  PROJECT:tavrinsdk-1\n", zero-terminated.
TAVRIN_EXPORT extern const unsigned char tavrinsdkVersionString[];
/// The library's version number, 1.0.
TAVRIN_EXPORT extern const double tavrinsdkVersionNumber;
}
