package com.tavrin.sdk;

import java.nio.charset.StandardCharsets;

// Text crosses into the native library as UTF-8 bytes, converted here: JNI's own
// strings are modified UTF-8, which differs for characters beyond the basic plane.
final class Utf8 {
  private Utf8() {}

  // The bytes of a text handed to the native library, which takes it zero-terminated:
  // a NUL inside would cut it short. Null stays null.
  static byte[] bytes(String what, String text) throws TavrinException {
    if (text == null) return null;
    if (text.indexOf('\0') >= 0) {
      throw new TavrinException(ErrorKind.INVALID_INPUT, what + " contains a NUL character");
    }
    return encode(text);
  }

  // The bytes of any text; null stays null.
  static byte[] encode(String text) {
    return text == null ? null : text.getBytes(StandardCharsets.UTF_8);
  }

  // A text the native library gave; null stays null.
  static String text(byte[] utf8) {
    return utf8 == null ? null : new String(utf8, StandardCharsets.UTF_8);
  }
}
