package com.tavrin.sdk;

/**
 * The phone as the host sees it, for a {@link Service} made with {@link
 * ServiceOptions#platform(Platform)}: the state of the permissions, the prompts, and each part of
 * the phone described as the matching member of a device profile (docs/device-profile.md). Every
 * call comes on the thread that runs the collection or preview, one at a time; it may call
 * nothing of the service but {@link Service#cancel()}. A method left as it is answers as a
 * denied permission or an empty store.
 */
public interface Platform {
  /** Where {@code permission} stands now. */
  default Authorization authorizationStatus(Permission permission) {
    return Authorization.DENIED;
  }

  /**
   * Shows the prompt for {@code permission} and completes {@code prompt} once, during this call or
   * later from any thread. If this throws before completing it, the prompt is denied.
   */
  default void requestAccess(Permission permission, Prompt prompt) {
    prompt.complete(Authorization.DENIED);
  }

  /**
   * The JSON of the device-profile member named {@code section} ("device", "contacts",
   * "calendars", "events", "reminders", "photos", "captureDevices", "location", "clock" or
   * "random"), or null for an empty store. Asked at most once per section and run. A malformed
   * answer fails the run with {@link ErrorKind#DEVICE_PROFILE}; an exception thrown here cancels
   * it, and the run's {@link TavrinException} carries it as its cause.
   */
  default String describe(String section) {
    return null;
  }
}
