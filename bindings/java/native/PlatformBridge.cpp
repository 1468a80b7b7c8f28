#include "PlatformBridge.hpp"

#include "JniSupport.hpp"

#include <com_tavrin_sdk_Prompt.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tavrin::java {
namespace {

struct {
  jmethodID authorizationStatus, requestAccess, describe;
} methods;

jobject bridgeOf(void* context) { return static_cast<JavaObject*>(context)->get(); }

long long authorizationStatus(void* context, int permission) {
  const JavaCall call;
  if (call.env() == nullptr) return TAVRIN_AUTHORIZATION_DENIED;
  const jlong status =
      call.env()->CallLongMethod(bridgeOf(context), methods.authorizationStatus, permission);
  return call.env()->ExceptionCheck() ? jlong{TAVRIN_AUTHORIZATION_DENIED} : status;
}

void requestAccess(void* context, int permission, tavrin_prompt* prompt) {
  const JavaCall call;
  if (call.env() == nullptr) {
    tavrin_prompt_complete(prompt, TAVRIN_AUTHORIZATION_DENIED, "no Java thread");
    return;
  }
  // From here the Java Prompt owns the prompt, and completes it once.
  call.env()->CallVoidMethod(bridgeOf(context), methods.requestAccess, permission,
                             static_cast<jlong>(reinterpret_cast<std::intptr_t>(prompt)));
}

void describe(void* context, const char* section, tavrin_answer* answer) {
  const JavaCall call;
  JNIEnv* env = call.env();
  if (env == nullptr) return;
  jbyteArray name = bytesOf(env, section);
  if (name == nullptr) return;
  auto json =
      static_cast<jbyteArray>(env->CallObjectMethod(bridgeOf(context), methods.describe, name));
  if (env->ExceptionCheck() || json == nullptr) return;
  const std::optional<std::string> text = textOf(env, json);
  tavrin_answer_json(answer, text->data(), text->size());
}

}  // namespace

bool loadPlatformBridge(JNIEnv* env) {
  jclass bridge = env->FindClass("com/tavrin/sdk/PlatformBridge");
  if (bridge == nullptr) return false;
  methods = {env->GetMethodID(bridge, "authorizationStatus", "(I)J"),
             env->GetMethodID(bridge, "requestAccess", "(IJ)V"),
             env->GetMethodID(bridge, "describe", "([B)[B")};
  return !env->ExceptionCheck();
}

bool installPlatform(tavrin_options* options, JavaObject& bridge) {
  tavrin_platform platform{};
  platform.context = &bridge;
  platform.authorization_status = authorizationStatus;
  platform.request_access = requestAccess;
  platform.describe = describe;
  return tavrin_options_set_platform(options, &platform) == 0;
}

}  // namespace tavrin::java

extern "C" JNIEXPORT void JNICALL Java_com_tavrin_sdk_Prompt_nativeComplete(
    JNIEnv* env, jclass, jlong handle, jlong status, jbyteArray errorDescription) {
  tavrin::java::guarded(env, 0, [&] {
    const auto description = tavrin::java::textOf(env, errorDescription);
    auto* prompt = reinterpret_cast<tavrin_prompt*>(  // NOLINT(performance-no-int-to-ptr)
        static_cast<std::intptr_t>(handle));
    return tavrin_prompt_complete(prompt, status, tavrin::java::cString(description));
  });
}
