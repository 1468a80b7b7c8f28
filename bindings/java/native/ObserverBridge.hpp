#pragma once

// A Java Observer (through its com.tavrin.sdk.ObserverBridge) as the observer
// and the log of the C interface.

#include "JavaCallbacks.hpp"

#include <tavrin/tavrin.h>

namespace tavrin::java {

// Looks up the bridge's methods; false with an exception pending when one is missing.
bool loadObserverBridge(JNIEnv* env);

// Holds the bridge for as long as a service made with it exists.
class ObserverBridge {
 public:
  ObserverBridge(JNIEnv* env, jobject bridge) : bridge_(env, bridge) {}

  // Gives the options this bridge as their observer and log; false when refused.
  bool install(tavrin_options* options);

 private:
  JavaObject bridge_;
};

}  // namespace tavrin::java
