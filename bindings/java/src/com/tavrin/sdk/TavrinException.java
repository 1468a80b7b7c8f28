package com.tavrin.sdk;

/**
 * A failed login, collection or preview: its kind, its message (null when it has none) and what
 * the failed exchange left behind.
 */
public final class TavrinException extends Exception {
  private static final long serialVersionUID = 1L;

  private final int kindValue;
  private final int httpStatus;
  private final String requestId;
  private final String transportReason;

  TavrinException(ErrorKind kind, String message) {
    this(kind.value(), message, 0, "", "");
  }

  private TavrinException(
      int kindValue, String message, int httpStatus, String requestId, String transportReason) {
    super(message);
    this.kindValue = kindValue;
    this.httpStatus = httpStatus;
    this.requestId = requestId;
    this.transportReason = transportReason;
  }

  // Made by the native library from its error object; its texts come as UTF-8.
  static TavrinException fromNative(
      int kindValue, byte[] message, int httpStatus, byte[] requestId, byte[] transportReason) {
    return new TavrinException(
        kindValue,
        Utf8.text(message),
        httpStatus,
        Utf8.text(requestId),
        Utf8.text(transportReason));
  }

  /** The kind of failure. */
  public ErrorKind kind() {
    return ErrorKind.of(kindValue);
  }

  /** The native value of the kind, which tells apart kinds newer than this binding. */
  public int kindValue() {
    return kindValue;
  }

  /** The HTTP status of the answer that failed the exchange; 0 for none. */
  public int httpStatus() {
    return httpStatus;
  }

  /** The X-Request-Id of that answer; "" for none. */
  public String requestId() {
    return requestId;
  }

  /** Why the transport failed, in libcurl's words; "" for none. */
  public String transportReason() {
    return transportReason;
  }
}
