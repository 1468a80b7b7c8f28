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

  // The JSON text of each member of a JSON object, by name (names without escapes).
  static Map<String, String> membersOf(String json) {
    Map<String, String> members = new HashMap<>();
    int at = json.indexOf('{') + 1;
    while (true) {
      int nameStart = json.indexOf('"', at) + 1;
      if (nameStart == 0) return members;
      int nameEnd = json.indexOf('"', nameStart);
      int valueStart = json.indexOf(':', nameEnd) + 1;
      int depth = 0;
      boolean inString = false;
      for (at = valueStart; ; at++) {
        char c = json.charAt(at);
        if (inString) {
          if (c == '\\') at++;
          else if (c == '"') inString = false;
        } else if (c == '"') {
          inString = true;
        } else if (c == '{' || c == '[') {
          depth++;
        } else if (c == '}' || c == ']' ? depth-- == 0 : c == ',' && depth == 0) {
          break;
        }
      }
      members.put(json.substring(nameStart, nameEnd), json.substring(valueStart, at).trim());
    }
  }
}
