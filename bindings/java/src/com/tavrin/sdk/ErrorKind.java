package com.tavrin.sdk;

/** Why a call of the SDK failed, with the value the native library gives each kind. */
public enum ErrorKind {
  /** A rejected URL, argument or option, or content the server refused. */
  INVALID_INPUT(0),
  /** A transport failure, an answer without a body, or the deadline. */
  CONNECTION_FAILED(1),
  /** The server refused the key or the action. */
  ACCESS_DENIED(2),
  /** The server failed, or the record number is taken. */
  SERVER_REJECTED(3),
  /** An answer could not be understood. */
  PROCESSING_FAILED(4),
  /** {@link Service#cancel()} stopped the run. */
  CANCELLED(5),
  /** The device gave a value that JSON cannot hold. */
  DATASET_NOT_JSON(100),
  /** The device profile, or a platform's answer, is unreadable or malformed. */
  DEVICE_PROFILE(101),
  /** Memory ran out in the native library. */
  OUT_OF_MEMORY(102),
  /** A kind this version of the binding does not know; see {@link TavrinException#kindValue()}. */
  UNKNOWN(-1);

  private final int value;

  ErrorKind(int value) {
    this.value = value;
  }

  /** The native library's value of this kind. */
  public int value() {
    return value;
  }

  /** The kind with the native value {@code value}, {@link #UNKNOWN} for none. */
  public static ErrorKind of(int value) {
    for (ErrorKind kind : values()) {
      if (kind.value == value) return kind;
    }
    return UNKNOWN;
  }
}
