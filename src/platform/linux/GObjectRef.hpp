#pragma once

#include <glib-object.h>

#include <memory>

namespace tavrin::platform {

// Owners of GLib's reference-counted and allocated values, released on every path.
struct GObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
struct GErrorFree {
  void operator()(GError* error) const { g_error_free(error); }
};
struct GFree {
  void operator()(gpointer memory) const { g_free(memory); }
};

template <typename Object>
using GObjectRef = std::unique_ptr<Object, GObjectUnref>;
using GErrorRef = std::unique_ptr<GError, GErrorFree>;
using GCharRef = std::unique_ptr<gchar, GFree>;

}  // namespace tavrin::platform
