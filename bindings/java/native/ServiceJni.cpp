// The native methods of com.tavrin.sdk.Service, and the loading of the library:
// each method calls the C interface and turns its error object into a TavrinException.
#include "JniSupport.hpp"
#include "ObserverBridge.hpp"
#include "PlatformBridge.hpp"

#include <com_tavrin_sdk_Service.h>

#include <cstdint>
#include <memory>
#include <new>
#include <string>

namespace {

using tavrin::java::COwned;
using tavrin::java::cString;
using tavrin::java::installObserver;
using tavrin::java::installPlatform;
using tavrin::java::textOf;
using tavrin::java::throwError;

// What a Service's handle points to: the C service, and the Java objects its
// callbacks call, which must outlive it (members are destroyed in reverse).
struct JavaService {
  std::unique_ptr<tavrin::java::JavaObject> observer;
  std::unique_ptr<tavrin::java::JavaObject> platform;
  COwned<tavrin_service> service;
};

// A Java handle is the pointer, kept in a long.
JavaService* javaServiceOf(jlong handle) {
  return reinterpret_cast<JavaService*>(  // NOLINT(performance-no-int-to-ptr)
      static_cast<std::intptr_t>(handle));
}

tavrin_service* serviceOf(jlong handle) { return javaServiceOf(handle)->service.get(); }

// Applies one setting; a refused one is thrown as invalid input naming it.
bool applied(JNIEnv* env, int result, const char* setting) {
  if (result == 0) return true;
  const std::string message = std::string("the option ") + setting + " was refused";
  throwError(env, TAVRIN_ERROR_INVALID_INPUT, message.c_str());
  return false;
}

// The answer of a run as a Java byte[], or the run's error thrown.
jbyteArray answerOf(JNIEnv* env, char* answer, tavrin_error* error) {
  const COwned<char> owned(answer);
  const COwned<tavrin_error> failure(error);
  if (answer == nullptr) {
    throwError(env, failure.get());
    return nullptr;
  }
  return tavrin::java::bytesOf(env, answer);
}

}  // namespace

extern "C" {

JNIEXPORT jlong JNICALL Java_com_tavrin_sdk_Service_nativeOpen(
    JNIEnv* env, jclass, jbyteArray url, jbyteArray key, jbyteArray caFile, jobjectArray resolve,
    jlong deadlineMs, jbyteArray profileFile, jobject observer, jobject platform) {
  return tavrin::java::guarded(env, jlong{0}, [&]() -> jlong {
    const COwned<tavrin_options> options(tavrin_options_new());
    if (!options) throw std::bad_alloc();
    if (!applied(env, tavrin_options_set_ca_file(options.get(), cString(textOf(env, caFile))),
                 "CA file") ||
        !applied(env, tavrin_options_set_deadline_ms(options.get(), deadlineMs), "deadline") ||
        !applied(env,
                 tavrin_options_set_profile_file(options.get(), cString(textOf(env, profileFile))),
                 "profile file"))
      return 0;
    for (jsize i = 0; i < env->GetArrayLength(resolve); ++i) {
      auto element = static_cast<jbyteArray>(env->GetObjectArrayElement(resolve, i));
      const auto entry = textOf(env, element);
      env->DeleteLocalRef(element);
      if (!applied(env, tavrin_options_add_resolve(options.get(), cString(entry)), "resolve"))
        return 0;
    }
    auto made = std::make_unique<JavaService>();
    if (observer != nullptr) {
      made->observer = std::make_unique<tavrin::java::JavaObject>(env, observer);
      if (!applied(env, installObserver(options.get(), *made->observer) ? 0 : -1, "observer"))
        return 0;
    }
    if (platform != nullptr) {
      made->platform = std::make_unique<tavrin::java::JavaObject>(env, platform);
      if (!applied(env, installPlatform(options.get(), *made->platform) ? 0 : -1, "platform"))
        return 0;
    }
    tavrin_error* error = nullptr;
    made->service.reset(tavrin_service_new(cString(textOf(env, url)), cString(textOf(env, key)),
                                           options.get(), &error));
    const COwned<tavrin_error> failure(error);
    if (!made->service) {
      throwError(env, failure.get());
      return 0;
    }
    return static_cast<jlong>(reinterpret_cast<std::intptr_t>(made.release()));
  });
}

JNIEXPORT jbyteArray JNICALL Java_com_tavrin_sdk_Service_nativeCollect(JNIEnv* env, jclass,
                                                                       jlong handle,
                                                                       jbyteArray recordNumber) {
  return tavrin::java::guarded(env, jbyteArray{nullptr}, [&] {
    tavrin_error* error = nullptr;
    char* answer =
        tavrin_service_collect(serviceOf(handle), cString(textOf(env, recordNumber)), &error);
    return answerOf(env, answer, error);
  });
}

JNIEXPORT jbyteArray JNICALL Java_com_tavrin_sdk_Service_nativePreview(JNIEnv* env, jclass,
                                                                       jlong handle) {
  return tavrin::java::guarded(env, jbyteArray{nullptr}, [&] {
    tavrin_error* error = nullptr;
    char* dataset = tavrin_service_preview(serviceOf(handle), &error);
    return answerOf(env, dataset, error);
  });
}

JNIEXPORT void JNICALL Java_com_tavrin_sdk_Service_nativeCancel(JNIEnv*, jclass, jlong handle) {
  tavrin_service_cancel(serviceOf(handle));
}

JNIEXPORT void JNICALL Java_com_tavrin_sdk_Service_nativeFree(JNIEnv*, jclass, jlong handle) {
  delete javaServiceOf(handle);
}

JNIEXPORT jint JNI_OnLoad(JavaVM* vm, void*) {
  JNIEnv* env = nullptr;
  if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_8) != JNI_OK) return JNI_ERR;
  tavrin::java::rememberVm(vm);
  const bool loaded = tavrin::java::loadErrors(env) && tavrin::java::loadObserverBridge(env) &&
                      tavrin::java::loadPlatformBridge(env);
  return loaded ? JNI_VERSION_1_8 : JNI_ERR;
}

}  // extern "C"
