#pragma once

// A Java Platform, through its com.tavrin.sdk.PlatformBridge, as the platform of
// the C interface; and the completion of its prompts.

#include "JavaCallbacks.hpp"

#include <tavrin/tavrin.h>

namespace tavrin::java {

// Looks up the bridge's methods; false with an exception pending when one is missing.
bool loadPlatformBridge(JNIEnv* env);

// Gives the options `bridge` as their platform; false when refused. The bridge
// must outlive every service made from the options.
bool installPlatform(tavrin_options* options, JavaObject& bridge);

}  // namespace tavrin::java
