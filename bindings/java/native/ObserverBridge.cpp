#include "ObserverBridge.hpp"

#include "JniSupport.hpp"

#include <string_view>

namespace tavrin::java {
namespace {

struct {
  jmethodID sourceStarted, sourceFinished, exchangeStarted, exchangeFinished, datasetReady, log;
} methods;

// Calls the bridge's `method` with `name` as UTF-8 bytes, then `arguments`.
template <typename... Arguments>
void tell(void* context, jmethodID method, std::string_view name, Arguments... arguments) {
  const JavaCall call;
  if (JNIEnv* env = call.env()) {
    jbyteArray bytes = bytesOf(env, name);
    if (bytes != nullptr) {
      env->CallVoidMethod(static_cast<JavaObject*>(context)->get(), method, bytes, arguments...);
    }
  }
}

}  // namespace

bool loadObserverBridge(JNIEnv* env) {
  jclass bridge = env->FindClass("com/tavrin/sdk/ObserverBridge");
  if (bridge == nullptr) return false;
  methods = {env->GetMethodID(bridge, "sourceStarted", "([B)V"),
             env->GetMethodID(bridge, "sourceFinished", "([BJJ)V"),
             env->GetMethodID(bridge, "exchangeStarted", "([B)V"),
             env->GetMethodID(bridge, "exchangeFinished", "([BIZJ)V"),
             env->GetMethodID(bridge, "datasetReady", "([B)V"),
             env->GetMethodID(bridge, "log", "([BI)V")};
  return !env->ExceptionCheck();
}

bool installObserver(tavrin_options* options, JavaObject& bridge) {
  tavrin_observer observer{};
  observer.context = &bridge;
  observer.source_started = [](void* context, const char* name) {
    tell(context, methods.sourceStarted, name);
  };
  observer.source_finished = [](void* context, const char* name, size_t entries,
                                long long elapsedNs) {
    tell(context, methods.sourceFinished, name, static_cast<jlong>(entries),
         static_cast<jlong>(elapsedNs));
  };
  observer.exchange_started = [](void* context, const char* name) {
    tell(context, methods.exchangeStarted, name);
  };
  observer.exchange_finished = [](void* context, const char* name, int status, int succeeded,
                                  long long elapsedNs) {
    tell(context, methods.exchangeFinished, name, static_cast<jint>(status),
         static_cast<jboolean>(succeeded != 0), static_cast<jlong>(elapsedNs));
  };
  observer.dataset_ready = [](void* context, const char* json, size_t length) {
    tell(context, methods.datasetReady, std::string_view(json, length));
  };
  const tavrin_log_fn log = [](void* context, int level, const char* line) {
    tell(context, methods.log, line, static_cast<jint>(level));
  };
  return tavrin_options_set_observer(options, &observer) == 0 &&
         tavrin_options_set_log(options, log, &bridge) == 0;
}

}  // namespace tavrin::java
