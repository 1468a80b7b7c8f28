package com.tavrin.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.time.Duration;
import java.util.ArrayList;
import java.util.List;
import java.util.Set;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

/** The binding against {@code tavrin sandbox}: a collection, each kind of error, cancellation. */
class ServiceTest {
  static final String PHONE = SandboxProcess.PROFILES + "/iphone-realistic.json";

  /** Writes down what it is told; throws at every exchange's start, which must change nothing. */
  static final class Recorder implements Observer {
    final List<String> events = new ArrayList<>();
    final List<String> lines = new ArrayList<>();
    String dataset = "";

    @Override
    public void sourceStarted(String name) {
      events.add("source " + name);
    }

    @Override
    public void sourceFinished(String name, long entries, Duration elapsed) {
      events.add(name + " " + entries + (elapsed.isNegative() ? " in negative time" : ""));
    }

    @Override
    public void exchangeStarted(String name) {
      throw new IllegalStateException("an observer's bug");
    }

    @Override
    public void exchangeFinished(String name, int status, boolean succeeded, Duration elapsed) {
      events.add(name + " " + status + " " + succeeded);
    }

    @Override
    public void datasetReady(String json) {
      dataset = json;
    }

    @Override
    public void log(LogLevel level, String line) {
      lines.add(level + " " + line);
    }
  }

  @Test
  void collectsAndPreviewsInUtf8WithObserver() throws Exception {
    Recorder recorder = new Recorder();
    try (SandboxProcess sandbox = new SandboxProcess();
        Service service =
            new Service(sandbox.url, "sandbox-key", sandbox.options(PHONE).observer(recorder))) {
      // Beyond the basic plane: JNI's own modified UTF-8 would mangle it.
      String record = "j-\u00fc-\ud83d\ude00";
      assertEquals("accepted record \"" + record + "\" as upload 1", service.collect(record));
      assertEquals(recorder.dataset.length(), service.preview().length());
    }
    // The login, the check, 13 sources started and finished, the upload, and the preview's.
    assertEquals(55, recorder.events.size());
    assertEquals(
        List.of("login 200 true", "check 200 true", "source Contacts", "Contacts 5"),
        recorder.events.subList(0, 4));
    assertEquals("upload 200 true", recorder.events.get(28));
    assertTrue(recorder.lines.stream().anyMatch(line -> line.startsWith("INFO ")), "log lines");
  }

  /** What a failing row does with its sandbox. */
  interface Attempt {
    void run(SandboxProcess sandbox) throws Exception;
  }

  /** A sandbox with its fault rule (or none), what is tried on it, and what that throws. */
  record Failure(
      String name, String fault, Attempt attempt, ErrorKind kind, String message, int status) {
    @Override
    public String toString() {
      return name;
    }
  }

  // Logs in to the sandbox with `options` and collects `record`.
  static void collect(SandboxProcess sandbox, ServiceOptions options, String record)
      throws TavrinException {
    try (Service service = new Service(sandbox.url, "sandbox-key", options)) {
      service.collect(record);
    }
  }

  static Stream<Failure> failures() {
    Attempt plain = s -> collect(s, s.options(PHONE), "j-1");
    return Stream.of(
        new Failure("null url", null, s -> new Service(null, "sandbox-key").close(),
            ErrorKind.INVALID_INPUT, "url is NULL", 0),
        new Failure("negative deadline", null,
            s -> collect(s, s.options(PHONE).deadline(Duration.ofMillis(-1)), "j-1"),
            ErrorKind.INVALID_INPUT, "the option deadline was refused", 0),
        new Failure("NUL in record", null, s -> collect(s, s.options(PHONE), "j\0-1"),
            ErrorKind.INVALID_INPUT, "record number contains a NUL character", 0),
        new Failure("forbidden", "upload:error=403/action_forbidden/Plan expired", plain,
            ErrorKind.ACCESS_DENIED, "action_forbidden. Plan expired", 403),
        new Failure("failing server", "check:status=503", plain, ErrorKind.SERVER_REJECTED, null,
            503),
        new Failure("redirect", "upload:status=302", plain, ErrorKind.PROCESSING_FAILED, null,
            302),
        new Failure("deadline", "check:stall",
            s -> collect(s, s.options(PHONE).deadline(Duration.ofMillis(300)), "j-1"),
            ErrorKind.CONNECTION_FAILED, "Deadline exceeded", 0));
  }

  @ParameterizedTest(name = "{0}")
  @MethodSource("failures")
  void reportsEachKindOfError(Failure row) throws Exception {
    try (SandboxProcess sandbox =
        row.fault == null ? new SandboxProcess() : new SandboxProcess(row.fault)) {
      TavrinException thrown = assertThrows(TavrinException.class, () -> row.attempt.run(sandbox));
      assertEquals(row.kind, thrown.kind());
      assertEquals(row.message, thrown.getMessage());
      assertEquals(row.status, thrown.httpStatus());
    }
  }

  @Test
  void cancelsAndClosesFromAnotherThread() throws Exception {
    ExecutorService runner = Executors.newSingleThreadExecutor();
    try (SandboxProcess sandbox = new SandboxProcess("check:stall")) {
      Service service = new Service(sandbox.url, "sandbox-key", sandbox.options(PHONE));
      // Whether it comes before the run starts or while the check waits, the run stops.
      Future<String> cancelled = runner.submit(() -> service.collect("j-1"));
      service.cancel();
      assertEquals("CANCELLED", endOf(cancelled));

      Future<String> closed = runner.submit(() -> service.collect("j-2"));
      service.close();
      String end = endOf(closed);
      assertTrue(Set.of("CANCELLED", "IllegalStateException").contains(end), end);
      assertThrows(IllegalStateException.class, service::preview);
      service.close();
    } finally {
      runner.shutdown();
    }
  }

  // How a run on another thread ended: the kind it threw, or the class of a Java exception.
  private static String endOf(Future<?> run) {
    Throwable cause = assertThrows(ExecutionException.class, run::get).getCause();
    return cause instanceof TavrinException
        ? ((TavrinException) cause).kind().name()
        : cause.getClass().getSimpleName();
  }
}
