#pragma once

// What the native methods of the binding share: text crossing between Java and
// C, the C objects owned in C++, and errors thrown as TavrinException.

#include <jni.h>
#include <tavrin/tavrin.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin::java {

struct CRelease {
  void operator()(tavrin_options* options) const { tavrin_options_free(options); }
  void operator()(tavrin_error* error) const { tavrin_error_free(error); }
  void operator()(tavrin_service* service) const { tavrin_service_free(service); }
  void operator()(char* text) const { tavrin_string_free(text); }
};
template <typename T>
using COwned = std::unique_ptr<T, CRelease>;

// The UTF-8 bytes of a Java byte[]; nothing for null. Java strings become UTF-8
// on the Java side, where the encoding is exact (JNI's own is modified UTF-8).
std::optional<std::string> textOf(JNIEnv* env, jbyteArray bytes);

// The C string of `text`, NULL when there is none.
inline const char* cString(const std::optional<std::string>& text) {
  return text ? text->c_str() : nullptr;
}

// `text` as a Java byte[]; null with an OutOfMemoryError pending when it cannot be made.
jbyteArray bytesOf(JNIEnv* env, std::string_view text);

// Looks up TavrinException; false with an exception pending when it is missing.
bool loadErrors(JNIEnv* env);

// Throws the TavrinException that `error` describes.
void throwError(JNIEnv* env, const tavrin_error* error);

// Throws a TavrinException of `kind` with `message`, for failures found by the binding itself.
void throwError(JNIEnv* env, int kind, const char* message);

// Runs `body`; memory running out in it becomes an OutOfMemoryError in Java,
// since no C++ exception may reach the virtual machine.
template <typename Result, typename Body>
Result guarded(JNIEnv* env, Result failed, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    env->ThrowNew(env->FindClass("java/lang/OutOfMemoryError"), "tavrin native binding");
    return failed;
  }
}

}  // namespace tavrin::java
