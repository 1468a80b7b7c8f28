#pragma once

// Calling Java from the callbacks of the C interface, on whichever thread they
// come: the thread is attached to the virtual machine when it is not already.

#include <jni.h>

namespace tavrin::java {

// Remembers the virtual machine; called once, when the library is loaded.
void rememberVm(JavaVM* vm);

// The JNIEnv of the calling thread, attaching the thread (until it ends) if it is
// not attached; nullptr when the virtual machine refuses.
JNIEnv* currentEnv();

// A Java object held for callbacks, released from any thread.
class JavaObject {
 public:
  JavaObject(JNIEnv* env, jobject object) : ref_(env->NewGlobalRef(object)) {}
  ~JavaObject();
  JavaObject(const JavaObject&) = delete;
  JavaObject& operator=(const JavaObject&) = delete;

  jobject get() const { return ref_; }

 private:
  jobject ref_;
};

// A callback's stretch of Java calls: its local references are freed at the end,
// and an exception the call left pending is cleared, since it cannot travel
// through the library's native frames.
class JavaCall {
 public:
  JavaCall() : env_(currentEnv()) {
    if (env_ != nullptr && env_->PushLocalFrame(16) != JNI_OK) env_ = nullptr;
  }
  ~JavaCall() {
    if (env_ == nullptr) return;
    env_->ExceptionClear();
    env_->PopLocalFrame(nullptr);
  }
  JavaCall(const JavaCall&) = delete;
  JavaCall& operator=(const JavaCall&) = delete;

  // Null when Java cannot be called from this thread: the callback then does nothing.
  JNIEnv* env() const { return env_; }

 private:
  JNIEnv* env_;
};

}  // namespace tavrin::java
