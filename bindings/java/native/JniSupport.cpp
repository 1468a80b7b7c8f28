#include "JniSupport.hpp"

namespace tavrin::java {
namespace {

// Looked up once when the library is loaded: a thread the host's platform
// starts has no class loader of the application to find them by name.
jclass exceptionClass = nullptr;
jmethodID exceptionFromNative = nullptr;

// Throws TavrinException.fromNative(...) of these values; `message` may be NULL.
void raise(JNIEnv* env, int kind, const char* message, int httpStatus, const char* requestId,
           const char* transportReason) {
  jbyteArray messageBytes = message != nullptr ? bytesOf(env, message) : nullptr;
  jbyteArray requestIdBytes = bytesOf(env, requestId);
  jbyteArray reasonBytes = bytesOf(env, transportReason);
  if (env->ExceptionCheck()) return;
  auto thrown = static_cast<jthrowable>(
      env->CallStaticObjectMethod(exceptionClass, exceptionFromNative, kind, messageBytes,
                                  httpStatus, requestIdBytes, reasonBytes));
  if (thrown != nullptr) env->Throw(thrown);
}

}  // namespace

std::optional<std::string> textOf(JNIEnv* env, jbyteArray bytes) {
  if (bytes == nullptr) return std::nullopt;
  std::string text(static_cast<std::size_t>(env->GetArrayLength(bytes)), '\0');
  env->GetByteArrayRegion(bytes, 0, static_cast<jsize>(text.size()),
                          reinterpret_cast<jbyte*>(text.data()));
  return text;
}

jbyteArray bytesOf(JNIEnv* env, std::string_view text) {
  jbyteArray bytes = env->NewByteArray(static_cast<jsize>(text.size()));
  if (bytes != nullptr) {
    env->SetByteArrayRegion(bytes, 0, static_cast<jsize>(text.size()),
                            reinterpret_cast<const jbyte*>(text.data()));
  }
  return bytes;
}

void throwError(JNIEnv* env, const tavrin_error* error) {
  raise(env, tavrin_error_kind(error), tavrin_error_message(error), tavrin_error_http_status(error),
        tavrin_error_request_id(error), tavrin_error_transport_reason(error));
}

void throwError(JNIEnv* env, int kind, const char* message) {
  raise(env, kind, message, 0, "", "");
}

bool loadErrors(JNIEnv* env) {
  jclass found = env->FindClass("com/tavrin/sdk/TavrinException");
  if (found == nullptr) return false;
  exceptionClass = static_cast<jclass>(env->NewGlobalRef(found));
  exceptionFromNative = env->GetStaticMethodID(exceptionClass, "fromNative",
                                               "(I[BI[B[B)Lcom/tavrin/sdk/TavrinException;");
  return exceptionFromNative != nullptr;
}

}  // namespace tavrin::java
