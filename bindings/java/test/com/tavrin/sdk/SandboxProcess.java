package com.tavrin.sdk;

import java.io.BufferedReader;
import java.io.InputStreamReader;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;

/**
 * A {@code tavrin sandbox} process on a free loopback port, reached as its ready line says:
 * "sandbox ready: --url URL --resolve HOST:PORT:ADDRESS --ca-file PEM".
 */
final class SandboxProcess implements AutoCloseable {
  static final String TOOL = System.getProperty("com.tavrin.sdk.tool");
  static final String PROFILES = System.getProperty("com.tavrin.sdk.profiles");

  final String url;
  final String resolve;
  final String caFile;
  private final Process process;

  SandboxProcess(String... faults) throws Exception {
    List<String> command = new ArrayList<>(Arrays.asList(TOOL, "sandbox", "--port", "0"));
    for (String fault : faults) {
      command.add("--fault");
      command.add(fault);
    }
    process = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
    BufferedReader out =
        new BufferedReader(new InputStreamReader(process.getInputStream(), StandardCharsets.UTF_8));
    String ready = CompletableFuture.supplyAsync(() -> readLine(out)).get(60, TimeUnit.SECONDS);
    String[] words = ready == null ? new String[0] : ready.split(" ");
    if (words.length != 8 || !ready.startsWith("sandbox ready: ")) {
      close();
      throw new IllegalStateException("no ready line from the sandbox: " + ready);
    }
    url = words[3];
    resolve = words[5];
    caFile = words[7];
  }

  /** Options that reach this sandbox and read the device from the profile file. */
  ServiceOptions options(String profile) {
    return new ServiceOptions().caFile(caFile).resolve(resolve).profileFile(profile);
  }

  private static String readLine(BufferedReader reader) {
    try {
      return reader.readLine();
    } catch (java.io.IOException e) {
      return null;
    }
  }

  @Override
  public void close() {
    process.destroy();
    try {
      process.waitFor(10, TimeUnit.SECONDS);
    } catch (InterruptedException e) {
      Thread.currentThread().interrupt();
    }
  }
}
