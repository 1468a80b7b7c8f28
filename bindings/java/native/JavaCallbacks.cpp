#include "JavaCallbacks.hpp"

namespace tavrin::java {
namespace {

JavaVM* javaVm = nullptr;

// Detaches at its end a thread that currentEnv() attached.
struct Attachment {
  bool attached = false;
  ~Attachment() {
    if (attached) javaVm->DetachCurrentThread();
  }
};
thread_local Attachment attachment;

}  // namespace

void rememberVm(JavaVM* vm) { javaVm = vm; }

JNIEnv* currentEnv() {
  void* env = nullptr;
  const jint state = javaVm->GetEnv(&env, JNI_VERSION_1_8);
  if (state == JNI_EDETACHED) {
    if (javaVm->AttachCurrentThreadAsDaemon(&env, nullptr) != JNI_OK) return nullptr;
    attachment.attached = true;
  } else if (state != JNI_OK) {
    return nullptr;
  }
  return static_cast<JNIEnv*>(env);
}

JavaObject::~JavaObject() {
  if (JNIEnv* env = currentEnv()) env->DeleteGlobalRef(ref_);
}

}  // namespace tavrin::java
