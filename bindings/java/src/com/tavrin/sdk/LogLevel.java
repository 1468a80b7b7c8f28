package com.tavrin.sdk;

/** How much a log line of the SDK matters. */
public enum LogLevel {
  /** Detail for developers. */
  DEBUG,
  /** The course of a run. */
  INFO,
  /** A failure the run may recover from. */
  WARNING,
  /** The run or the login failed. */
  ERROR
}
