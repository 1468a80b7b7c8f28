package com.tavrin.sdk;

import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Paths;
import java.util.EnumMap;
import java.util.HashMap;
import java.util.Map;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;

/**
 * A platform in Java that describes the phone of a device-profile file member by member. Its
 * permissions start as given; a prompt grants access, answered from a thread of its own as a
 * phone's dialog would be.
 */
final class ProfilePhone implements Platform, AutoCloseable {
  final Map<String, String> members;
  final Map<Permission, Authorization> statuses = new EnumMap<>(Permission.class);
  volatile boolean completedTwice;
  private final ExecutorService dialogs = Executors.newSingleThreadExecutor();

  ProfilePhone(String profile, Authorization initially) throws Exception {
    members = membersOf(new String(Files.readAllBytes(Paths.get(profile)), StandardCharsets.UTF_8));
    for (Permission permission : Permission.values()) statuses.put(permission, initially);
  }

  @Override
  public synchronized Authorization authorizationStatus(Permission permission) {
    return statuses.get(permission);
  }

  @Override
  public void requestAccess(Permission permission, Prompt prompt) {
    dialogs.execute(
        () -> {
          synchronized (this) {
            statuses.put(permission, Authorization.AUTHORIZED);
          }
          prompt.complete(Authorization.AUTHORIZED);
          try {
            prompt.complete(Authorization.DENIED);
            completedTwice = true;
          } catch (IllegalStateException expected) {
            // A prompt is completed once; the native one is gone by now.
          }
        });
  }

  /** The member's JSON; a member whose text is "throw" makes this throw instead. */
  @Override
  public String describe(String section) {
    String json = members.get(section);
    if ("throw".equals(json)) throw new IllegalStateException("no " + section);
    return json;
  }

  @Override
  public void close() {
    dialogs.shutdown();
  }

  // The JSON of each member of a profile laid out as the examples are: each member
  // on a line of its own, indented by two spaces.
  static Map<String, String> membersOf(String profile) {
    Map<String, String> members = new HashMap<>();
    for (String member : profile.split("\n  \"")) {
      int colon = member.indexOf("\": ");
      if (colon < 0) continue; // the opening brace
      String json = member.substring(colon + 3).replaceFirst(",?\\s*(\\n}\\s*)?$", "");
      members.put(member.substring(0, colon), json);
    }
    return members;
  }
}
