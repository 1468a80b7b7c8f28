package com.tavrin.sdk;

import java.io.BufferedReader;
import java.io.InputStreamReader;
import java.util.ArrayList;
import java.util.List;

/**
 * A {@code tavrin sandbox} process on a free loopback port, reached as its ready line says:
 * "sandbox ready: --url URL --resolve HOST:PORT:ADDRESS --ca-file PEM". A sandbox that never
 * says it is ready is ended by the suite's timeout.
 */
final class SandboxProcess implements AutoCloseable {
  static final String PROFILES = System.getProperty("com.tavrin.sdk.profiles");

  final String url;
  final String resolve;
  final String caFile;
  private final Process process;

  SandboxProcess(String... faults) throws Exception {
    List<String> command = new ArrayList<>(List.of(System.getProperty("com.tavrin.sdk.tool")));
    command.addAll(List.of("sandbox", "--port", "0"));
    for (String fault : faults) command.addAll(List.of("--fault", fault));
    process = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
    String ready = new BufferedReader(new InputStreamReader(process.getInputStream())).readLine();
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

  @Override
  public void close() {
    process.destroy();
    process.onExit().join();
  }
}
