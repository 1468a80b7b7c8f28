package com.tavrin.sdk;

import java.time.Duration;

// What the native library calls for an Observer: texts arrive as UTF-8 bytes, and
// nothing the host's code throws may travel back into native frames.
final class ObserverBridge {
  private final Observer observer;

  ObserverBridge(Observer observer) {
    this.observer = observer;
  }

  void sourceStarted(byte[] name) {
    run(() -> observer.sourceStarted(Utf8.text(name)));
  }

  void sourceFinished(byte[] name, long entries, long elapsedNs) {
    Duration elapsed = Duration.ofNanos(elapsedNs);
    run(() -> observer.sourceFinished(Utf8.text(name), entries, elapsed));
  }

  void exchangeStarted(byte[] name) {
    run(() -> observer.exchangeStarted(Utf8.text(name)));
  }

  void exchangeFinished(byte[] name, int status, boolean succeeded, long elapsedNs) {
    Duration elapsed = Duration.ofNanos(elapsedNs);
    run(() -> observer.exchangeFinished(Utf8.text(name), status, succeeded, elapsed));
  }

  void datasetReady(byte[] json) {
    run(() -> observer.datasetReady(Utf8.text(json)));
  }

  void log(byte[] line, int level) {
    run(() -> observer.log(LogLevel.values()[level], Utf8.text(line)));
  }

  private static void run(Runnable call) {
    try {
      call.run();
    } catch (RuntimeException ignored) {
      // The run goes on: an observer only watches it.
    }
  }
}
