package com.tavrin.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;

import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.EnumSource;

/** A platform written in Java describes the same phone as the device-profile file. */
class PlatformTest {
  @ParameterizedTest(name = "permissions {0} at first")
  @EnumSource(
      value = Authorization.class,
      names = {"AUTHORIZED", "NOT_DETERMINED"})
  void collectsTheDatasetOfTheProfileFile(Authorization initially) throws Exception {
    try (SandboxProcess sandbox = new SandboxProcess();
        ProfilePhone phone = new ProfilePhone(ServiceTest.PHONE, initially);
        Service fromJava =
            new Service(sandbox.url, "sandbox-key", sandbox.options(null).platform(phone));
        Service fromFile =
            new Service(sandbox.url, "sandbox-key", sandbox.options(ServiceTest.PHONE))) {
      assertEquals("accepted record \"p-1\" as upload 1", fromJava.collect("p-1"));
      assertEquals(fromFile.preview(), fromJava.preview());
      assertFalse(phone.completedTwice, "a prompt completed twice");
    }
  }

  /** The login reads "device", the collection the others; the cause is what the platform threw. */
  @ParameterizedTest(name = "{0}: {1}")
  @CsvSource(
      delimiter = '|',
      textBlock =
          """
          contacts | {"list": [{"identifier": 5}]} | DEVICE_PROFILE | \
            host platform: /contacts/list/0/identifier: expected a string |
          contacts | throw        | CANCELLED      | Cancelled           | no contacts
          device   | {"model": 1} | DEVICE_PROFILE | host platform: /device/model: expected a string |
          device   | throw        | CANCELLED      | the platform failed | no device
          """)
  void failsWithWhatThePlatformGave(
      String section, String answer, ErrorKind kind, String message, String cause)
      throws Exception {
    try (SandboxProcess sandbox = new SandboxProcess();
        ProfilePhone phone = new ProfilePhone(ServiceTest.PHONE, Authorization.AUTHORIZED)) {
      phone.members.put(section, answer);
      ServiceOptions options = sandbox.options(null).platform(phone);
      TavrinException thrown =
          assertThrows(TavrinException.class, () -> ServiceTest.collect(sandbox, options, "p-1"));
      assertEquals(kind, thrown.kind());
      assertEquals(message, thrown.getMessage());
      assertEquals(cause, thrown.getCause() == null ? null : thrown.getCause().getMessage());
    }
  }
}
