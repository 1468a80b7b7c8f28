#pragma once

// A Java Observer, through its com.tavrin.sdk.ObserverBridge, as the observer and
// the log of the C interface.

#include "JavaCallbacks.hpp"

#include <tavrin/tavrin.h>

namespace tavrin::java {

// Looks up the bridge's methods; false with an exception pending when one is missing.
bool loadObserverBridge(JNIEnv* env);

// Gives the options `bridge` as their observer and log; false when refused. The
// bridge must outlive every service made from the options.
bool installObserver(tavrin_options* options, JavaObject& bridge);

}  // namespace tavrin::java
