package com.tavrin.sdk;

import java.time.Duration;
import java.util.ArrayList;
import java.util.List;

/**
 * Settings for a {@link Service}: where it connects, what it trusts and which device it reads.
 * The setters return the options, to be chained; a service keeps its own copy.
 */
public final class ServiceOptions {
  String caFile;
  final List<String> resolve = new ArrayList<>();
  Duration deadline = Duration.ZERO;
  String profileFile;
  Observer observer;
  Platform platform;

  /** Trusts the CA certificates of this PEM file instead of the system store; null for the store. */
  public ServiceOptions caFile(String path) {
    caFile = path;
    return this;
  }

  /** Adds a "HOST:PORT:ADDRESS" entry that replaces name resolution for that host and port. */
  public ServiceOptions resolve(String hostPortAddress) {
    resolve.add(hostPortAddress);
    return this;
  }

  /** The longest one login, collection or preview may take; zero for no limit. */
  public ServiceOptions deadline(Duration longest) {
    deadline = java.util.Objects.requireNonNull(longest, "deadline");
    return this;
  }

  /** Reads the device from this device-profile file instead of the machine; null for the machine. */
  public ServiceOptions profileFile(String path) {
    profileFile = path;
    return this;
  }

  /**
   * Reads the device through {@code platform}, implemented by the host, instead of the machine or
   * a profile file; null for neither.
   */
  public ServiceOptions platform(Platform platform) {
    this.platform = platform;
    return this;
  }

  /** Tells {@code observer} how the service progresses, and gives it the log; null for nobody. */
  public ServiceOptions observer(Observer observer) {
    this.observer = observer;
    return this;
  }
}
