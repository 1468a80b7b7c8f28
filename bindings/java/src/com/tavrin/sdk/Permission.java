package com.tavrin.sdk;

/** The four permissions a collection may ask for. */
public enum Permission {
  /** The photo library. */
  PHOTO_LIBRARY,
  /** The address book. */
  CONTACTS,
  /** The calendars' events. */
  CALENDAR_EVENTS,
  /** The reminder lists. */
  REMINDERS
}
