package com.tavrin.sdk;

/** Where a permission stands; only {@link #AUTHORIZED} grants access. */
public enum Authorization {
  /** The user has not been asked yet. */
  NOT_DETERMINED,
  /** The store is unavailable to the app. */
  RESTRICTED,
  /** The user refused. */
  DENIED,
  /** The user granted access. */
  AUTHORIZED,
  /** Photo library only: a partial grant. */
  LIMITED
}
