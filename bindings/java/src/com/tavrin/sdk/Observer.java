package com.tavrin.sdk;

import java.time.Duration;

/**
 * Told how a service progresses, and given its log lines. Every call comes on the thread that
 * runs the login, collection or preview, one at a time; it must return quickly and may call
 * nothing of the service but {@link Service#cancel()}. An exception it throws is ignored. Each
 * method does nothing unless overridden.
 */
public interface Observer {
  /** A data source starts reading; {@code name} is its section name, e.g. "Contacts". */
  default void sourceStarted(String name) {}

  /** The source is done: {@code entries} values in its section. */
  default void sourceFinished(String name, long entries, Duration elapsed) {}

  /** An exchange starts: {@code name} is "login", "check" or "upload". */
  default void exchangeStarted(String name) {}

  /**
   * The exchange ended with HTTP {@code status} (0 for none); {@code succeeded} when the answer
   * was the one asked for.
   */
  default void exchangeFinished(String name, int status, boolean succeeded, Duration elapsed) {}

  /** The dataset's compact JSON, just before it is compressed and uploaded. */
  default void datasetReady(String json) {}

  /** One log line of the SDK, one sentence. */
  default void log(LogLevel level, String line) {}
}
