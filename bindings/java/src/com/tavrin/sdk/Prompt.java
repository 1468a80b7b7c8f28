package com.tavrin.sdk;

import java.util.concurrent.atomic.AtomicLong;

/**
 * A permission prompt the host shows, completed once with the user's answer, from any thread. A
 * run that stopped meanwhile ignores the answer; a prompt never completed keeps its run waiting
 * until it is cancelled or its deadline passes.
 */
public final class Prompt {
  private final AtomicLong handle;

  Prompt(long handle) {
    this.handle = new AtomicLong(handle);
  }

  /** Completes the prompt with where the permission stands after the user's answer. */
  public void complete(Authorization status) {
    complete(status, null);
  }

  /**
   * Completes the prompt with where the permission stands and, for a prompt that failed, why.
   *
   * @throws IllegalStateException when the prompt was completed before
   */
  public void complete(Authorization status, String errorDescription) {
    if (!completeIfPending(status, errorDescription)) {
      throw new IllegalStateException("the prompt was completed before");
    }
  }

  // Completes the prompt unless that was done before; true when this call did it.
  boolean completeIfPending(Authorization status, String errorDescription) {
    long pending = handle.getAndSet(0);
    if (pending == 0) return false;
    // Only told on, so a NUL in it is written out rather than refused.
    String description = errorDescription == null ? null : errorDescription.replace("\0", "\\0");
    nativeComplete(pending, status.ordinal(), Utf8.encode(description));
    return true;
  }

  private static native void nativeComplete(long handle, long status, byte[] errorDescription);
}
