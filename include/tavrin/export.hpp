#pragma once

// Marks a name as part of the library's exported interface. Everything else
// in the shared library is hidden.
#define TAVRIN_EXPORT __attribute__((visibility("default")))
