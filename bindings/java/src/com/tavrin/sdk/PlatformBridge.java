package com.tavrin.sdk;

// What the native library calls for a Platform. Nothing the host's code throws may
// travel back into native frames: a failing answer cancels the run instead, and the
// service hands the exception on as the cause of the run's TavrinException.
final class PlatformBridge {
  private final Platform platform;
  private volatile Service service;
  private RuntimeException failure;

  PlatformBridge(Platform platform) {
    this.platform = platform;
  }

  void attach(Service service) {
    this.service = service;
  }

  // The first failure of the host's code since the last call, or null.
  synchronized RuntimeException takeFailure() {
    RuntimeException taken = failure;
    failure = null;
    return taken;
  }

  long authorizationStatus(int permission) {
    try {
      return platform.authorizationStatus(Permission.values()[permission]).ordinal();
    } catch (RuntimeException e) {
      fail(e);
      return Authorization.DENIED.ordinal();
    }
  }

  void requestAccess(int permission, long promptHandle) {
    Prompt prompt = new Prompt(promptHandle);
    try {
      platform.requestAccess(Permission.values()[permission], prompt);
    } catch (RuntimeException e) {
      prompt.completeIfPending(Authorization.DENIED, e.toString());
    }
  }

  byte[] describe(byte[] section) {
    try {
      return Utf8.encode(platform.describe(Utf8.text(section)));
    } catch (RuntimeException e) {
      fail(e);
      return null;
    }
  }

  private void fail(RuntimeException e) {
    synchronized (this) {
      if (failure == null) failure = e;
    }
    if (service != null) service.cancel();
  }
}
