package com.tavrin.sdk;

import java.util.concurrent.locks.ReadWriteLock;
import java.util.concurrent.locks.ReentrantReadWriteLock;

/**
 * A logged-in service of the tavrin SDK: collects the device's dataset and uploads it, one
 * collection or preview at a time. {@link #cancel()} and {@link #close()} may be called from any
 * thread; closing stops a run in progress and waits for it to end.
 */
public final class Service implements AutoCloseable {
  static {
    String library = System.getProperty("com.tavrin.sdk.library");
    if (library != null) {
      System.load(library);
    } else {
      System.loadLibrary("tavrin_jni");
    }
  }

  // Runs share the handle; closing takes it alone, so it is never freed under a run.
  private final ReadWriteLock lock = new ReentrantReadWriteLock();
  private long handle;
  private final PlatformBridge platform;

  /** Checks the URL and logs in with the key and default options, blocking until answered. */
  public Service(String url, String key) throws TavrinException {
    this(url, key, new ServiceOptions());
  }

  /** Checks the URL and logs in with the key, blocking until the login is answered. */
  public Service(String url, String key, ServiceOptions options) throws TavrinException {
    byte[][] resolve = new byte[options.resolve.size()][];
    for (int i = 0; i < resolve.length; i++) {
      resolve[i] = Utf8.bytes("resolve entry", options.resolve.get(i));
    }
    platform = options.platform == null ? null : new PlatformBridge(options.platform);
    handle =
        nativeOpen(
            Utf8.bytes("url", url),
            Utf8.bytes("key", key),
            Utf8.bytes("CA file", options.caFile),
            resolve,
            options.deadline.toMillis(),
            Utf8.bytes("profile file", options.profileFile),
            options.observer == null ? null : new ObserverBridge(options.observer),
            platform);
    if (platform != null) {
      // The login reads the device: a platform that threw then had nothing to cancel.
      RuntimeException failure = platform.takeFailure();
      if (failure != null) {
        close();
        TavrinException failed = new TavrinException(ErrorKind.CANCELLED, "the platform failed");
        failed.initCause(failure);
        throw failed;
      }
      platform.attach(this);
    }
  }

  /**
   * Asks for undecided permissions, checks the record number with the server, collects the
   * dataset and uploads it; returns the server's answer. The service stays usable after a failure.
   */
  public String collect(String recordNumber) throws TavrinException {
    byte[] record = Utf8.bytes("record number", recordNumber);
    return run(live -> nativeCollect(live, record));
  }

  /** The dataset's JSON that a collection would upload now, made without network traffic. */
  public String preview() throws TavrinException {
    return run(Service::nativePreview);
  }

  private interface Run {
    byte[] on(long handle) throws TavrinException;
  }

  // Runs a collection or preview on the handle, which stays alive meanwhile. The
  // run's error carries what the host's platform threw, when that cancelled it.
  private String run(Run run) throws TavrinException {
    lock.readLock().lock();
    try {
      if (platform != null) platform.takeFailure();
      return Utf8.text(run.on(live()));
    } catch (TavrinException e) {
      RuntimeException cause = platform == null ? null : platform.takeFailure();
      if (cause != null) e.initCause(cause);
      throw e;
    } finally {
      lock.readLock().unlock();
    }
  }

  /**
   * Stops the run in progress within 100 ms, which then throws {@link ErrorKind#CANCELLED}; with
   * none in progress, the next run stops at its start. Returns at once; does nothing once closed.
   */
  public void cancel() {
    lock.readLock().lock();
    try {
      if (handle != 0) nativeCancel(handle);
    } finally {
      lock.readLock().unlock();
    }
  }

  /** Stops the run in progress, waits for it to end and releases the service. Idempotent. */
  @Override
  public void close() {
    cancel();
    lock.writeLock().lock();
    try {
      nativeFree(handle);
      handle = 0;
    } finally {
      lock.writeLock().unlock();
    }
  }

  private long live() {
    if (handle == 0) throw new IllegalStateException("the service is closed");
    return handle;
  }

  private static native long nativeOpen(
      byte[] url,
      byte[] key,
      byte[] caFile,
      byte[][] resolve,
      long deadlineMs,
      byte[] profileFile,
      ObserverBridge observer,
      PlatformBridge platform)
      throws TavrinException;

  private static native byte[] nativeCollect(long handle, byte[] recordNumber)
      throws TavrinException;

  private static native byte[] nativePreview(long handle) throws TavrinException;

  private static native void nativeCancel(long handle);

  private static native void nativeFree(long handle);
}
