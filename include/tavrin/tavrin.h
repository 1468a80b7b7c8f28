#ifndef TAVRIN_TAVRIN_H
#define TAVRIN_TAVRIN_H

/// \file
/// The C interface of tavrinsdk, for hosts written in C or in any language that
/// calls C (Python, Java through JNI, Swift, Kotlin/Native). It compiles as C99
/// and as C++.
///
/// Objects are opaque handles made by a `_new` function and released by the
/// matching `_free` function; each `_free` accepts NULL. A `char*` the library
/// returns belongs to the caller, who releases it with tavrin_string_free(). A
/// `const char*` the library returns belongs to the object it came from and lives
/// as long as that object. Strings passed in are zero-terminated UTF-8 and are
/// copied before the call returns.
///
/// A function that can fail in a way worth explaining takes a `tavrin_error**`:
/// on failure it stores a new error there (when the pointer is not NULL) that the
/// caller releases with tavrin_error_free(), and on success it leaves it alone.
/// No C++ exception ever leaves a function of this header.

// A C header: C names, C typedefs and C includes throughout.
// NOLINTBEGIN(readability-identifier-naming, modernize-use-using, modernize-deprecated-headers)

#include <stddef.h>

#ifndef TAVRIN_EXPORT
#define TAVRIN_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Settings for a service: where it connects, what it trusts, whom it tells. Not
/// synchronised: one thread at a time.
typedef struct tavrin_options tavrin_options;
/// A service object: logged in once, then one collection at a time.
typedef struct tavrin_service tavrin_service;
/// Why a call failed: a kind, a message, and what the failed exchange left behind.
/// Immutable: may be read from any thread.
typedef struct tavrin_error tavrin_error;

/// The kinds of tavrin_error_kind(). Values 0 to 5 are those of the C++ ErrorType.
enum tavrin_error_kind_value {
  TAVRIN_ERROR_INVALID_INPUT = 0,       ///< Rejected URL, argument or option, or content.
  TAVRIN_ERROR_CONNECTION_FAILED = 1,   ///< Transport failure, no body, or the deadline.
  TAVRIN_ERROR_ACCESS_DENIED = 2,       ///< The server refused access.
  TAVRIN_ERROR_SERVER_REJECTED = 3,     ///< The server failed, or the record number is taken.
  TAVRIN_ERROR_PROCESSING_FAILED = 4,   ///< An answer could not be understood.
  TAVRIN_ERROR_CANCELLED = 5,           ///< tavrin_service_cancel() stopped the run.
  TAVRIN_ERROR_DATASET_NOT_JSON = 100,  ///< The dataset cannot be written as JSON.
  TAVRIN_ERROR_DEVICE_PROFILE = 101,    ///< The device profile is unreadable or malformed.
  TAVRIN_ERROR_OUT_OF_MEMORY = 102,     ///< Memory ran out.
};

/// How much a log line matters; the values of the C++ LogLevel.
enum tavrin_log_level {
  TAVRIN_LOG_DEBUG = 0,    ///< Detail for developers.
  TAVRIN_LOG_INFO = 1,     ///< The course of a run.
  TAVRIN_LOG_WARNING = 2,  ///< A failure the run may recover from.
  TAVRIN_LOG_ERROR = 3,    ///< The run or the login failed.
};

/// Receives one log line (one sentence, zero-terminated, valid during the call only)
/// at a level of tavrin_log_level. Called on the thread that runs the operation; must
/// return quickly and must not call the service except tavrin_service_cancel().
typedef void (*tavrin_log_fn)(void* context, int level, const char* line);

/// Told how a service progresses. Any callback may be NULL. Every call comes on the
/// thread that runs the operation, one at a time, with `context` as given; names
/// and JSON are valid during the call only. A callback must return quickly and must
/// not call the service except tavrin_service_cancel().
typedef struct tavrin_observer {
  void* context;  ///< Passed to every callback as it is.
  /// A data source starts reading; `name` is its section name, e.g. "Contacts".
  void (*source_started)(void* context, const char* name);
  /// The source is done: `entries` values in its section, after `elapsed_ns`.
  void (*source_finished)(void* context, const char* name, size_t entries, long long elapsed_ns);
  /// An exchange starts: `name` is "login", "check" or "upload".
  void (*exchange_started)(void* context, const char* name);
  /// The exchange ended: HTTP `status` (0 for none), `succeeded` 1 when the answer
  /// was the one asked for, after `elapsed_ns`.
  void (*exchange_finished)(void* context, const char* name, int status, int succeeded,
                            long long elapsed_ns);
  /// The dataset's compact JSON, `length` bytes NOT zero-terminated, just before it is
  /// compressed; tavrin_service_cancel() here stops the run before the upload.
  void (*dataset_ready)(void* context, const char* json, size_t length);
} tavrin_observer;

/// The four permissions a collection may ask for, as tavrin_platform names them.
enum tavrin_permission {
  TAVRIN_PERMISSION_PHOTO_LIBRARY = 0,    ///< The photo library.
  TAVRIN_PERMISSION_CONTACTS = 1,         ///< The address book.
  TAVRIN_PERMISSION_CALENDAR_EVENTS = 2,  ///< The calendars' events.
  TAVRIN_PERMISSION_REMINDERS = 3,        ///< The reminder lists.
};

/// Raw authorization statuses, as a phone reports them; only AUTHORIZED grants access.
enum tavrin_authorization {
  TAVRIN_AUTHORIZATION_NOT_DETERMINED = 0,  ///< The user has not been asked yet.
  TAVRIN_AUTHORIZATION_RESTRICTED = 1,      ///< The store is unavailable to the app.
  TAVRIN_AUTHORIZATION_DENIED = 2,          ///< The user refused.
  TAVRIN_AUTHORIZATION_AUTHORIZED = 3,      ///< The user granted access.
  TAVRIN_AUTHORIZATION_LIMITED = 4,         ///< Photo library only: a partial grant.
};

/// A permission prompt the host shows; completed once with tavrin_prompt_complete().
typedef struct tavrin_prompt tavrin_prompt;
/// Where the host puts its answer to a data query, with tavrin_answer_json().
typedef struct tavrin_answer tavrin_answer;

/// The device as the host sees it: callbacks through which a host in any language
/// answers the library's questions about the phone. Any callback may be NULL: a
/// permission is then denied and a query unanswered. Callbacks come on the thread
/// that runs the operation, one at a time, with `context` as given; they must not
/// call the service except tavrin_service_cancel().
typedef struct tavrin_platform {
  void* context;  ///< Passed to every callback as it is.
  /// The raw status of `permission` (tavrin_permission) now, a tavrin_authorization value.
  long long (*authorization_status)(void* context, int permission);
  /// Shows the prompt for `permission`. The host completes `prompt` exactly once with
  /// tavrin_prompt_complete(), during this call or later from any thread.
  void (*request_access)(void* context, int permission, tavrin_prompt* prompt);
  /// Answers one member of a device profile (docs/device-profile.md) named `section`:
  /// "device", "contacts", "calendars", "events", "reminders", "photos",
  /// "captureDevices", "location", "clock" or "random". The host gives the member's
  /// JSON with tavrin_answer_json() during the call, or nothing for an empty store.
  /// Asked at most once per section and run, when the run first needs it.
  void (*describe)(void* context, const char* section, tavrin_answer* answer);
} tavrin_platform;

/// The library's version, for example "1.0.0". Static storage: never freed. Any thread.
TAVRIN_EXPORT const char* tavrin_version(void);

/// New options, every setting at its default (the Linux machine the library runs on,
/// the system's CA store, no deadline). NULL only when memory runs out. Free with
/// tavrin_options_free().
TAVRIN_EXPORT tavrin_options* tavrin_options_new(void);
/// Releases options and what they hold. A service made from them keeps its own copy.
TAVRIN_EXPORT void tavrin_options_free(tavrin_options* options);

// The setters below return 0 on success and -1 when `options` is NULL, a required
// argument is NULL or out of range, or memory runs out; the options stay as they
// were then. Values are checked again by tavrin_service_new().

/// Trusts the CA certificates of the PEM file at `path` instead of the system store;
/// NULL or "" for the system store. Server certificates are always verified.
TAVRIN_EXPORT int tavrin_options_set_ca_file(tavrin_options* options, const char* path);
/// Adds a "HOST:PORT:ADDRESS" entry that replaces name resolution for that host and
/// port, e.g. "api.tavrin.com:443:127.0.0.1".
TAVRIN_EXPORT int tavrin_options_add_resolve(tavrin_options* options,
                                             const char* host_port_address);
/// The longest one login, collection or preview may take in all; 0 for none.
/// Negative values are refused.
TAVRIN_EXPORT int tavrin_options_set_deadline_ms(tavrin_options* options, long long milliseconds);
/// Reads the device from the device-profile file at `path` instead of the Linux
/// machine; NULL or "" for the machine. The file is read by tavrin_service_new(), which
/// reports a bad profile as TAVRIN_ERROR_DEVICE_PROFILE. Replaces a host's platform set
/// before, and is replaced by one set after.
TAVRIN_EXPORT int tavrin_options_set_profile_file(tavrin_options* options, const char* path);
/// Reads the device through `host_platform` (copied; its context must outlive every
/// service made from these options) instead of the Linux machine or a profile file;
/// NULL for neither. Replaces a profile file set before, and is replaced by one set after.
TAVRIN_EXPORT int tavrin_options_set_platform(tavrin_options* options,
                                              const tavrin_platform* host_platform);
/// Sends the library's log lines to `fn` with `context`; NULL `fn` for none.
TAVRIN_EXPORT int tavrin_options_set_log(tavrin_options* options, tavrin_log_fn fn, void* context);
/// Tells `observer` (copied; its context must outlive every service made from these
/// options) how services progress; NULL for nobody.
TAVRIN_EXPORT int tavrin_options_set_observer(tavrin_options* options,
                                              const tavrin_observer* observer);

/// Checks `url` and logs in with `key`, blocking until the login is answered. Returns
/// the service, or NULL with an error: TAVRIN_ERROR_INVALID_INPUT for a NULL argument,
/// a bad URL or option, TAVRIN_ERROR_DEVICE_PROFILE for a bad profile, or the
/// login's error. `options` may be NULL for the defaults and may be freed once this
/// returns. Free the service with tavrin_service_free(). Any thread.
TAVRIN_EXPORT tavrin_service* tavrin_service_new(const char* url, const char* key,
                                                 const tavrin_options* options,
                                                 tavrin_error** error);
/// Asks for undecided permissions, checks `record_number` with the server, collects
/// the dataset and uploads it. Blocks until then and returns the server's answer (free
/// with tavrin_string_free()), or NULL with an error: TAVRIN_ERROR_CANCELLED after
/// tavrin_service_cancel(), TAVRIN_ERROR_INVALID_INPUT for a NULL argument or a run
/// already in progress, or the run's error. The service stays usable. One call at a
/// time per service.
TAVRIN_EXPORT char* tavrin_service_collect(tavrin_service* service, const char* record_number,
                                           tavrin_error** error);
/// The dataset's JSON that a collection would upload now, made without network
/// traffic (free with tavrin_string_free()), or NULL with an error as for
/// tavrin_service_collect().
TAVRIN_EXPORT char* tavrin_service_preview(tavrin_service* service, tavrin_error** error);
/// Stops the run in progress at its next safe point, within 100 ms; with none in
/// progress, the next run stops at its start. Returns at once. Any thread, while the
/// service exists; NULL is ignored.
TAVRIN_EXPORT void tavrin_service_cancel(tavrin_service* service);
/// Releases the service. No call on it may be in progress or follow.
TAVRIN_EXPORT void tavrin_service_free(tavrin_service* service);

// The accessors of an error accept NULL, for which they give -1, NULL, 0, "" and "".

/// The kind of the error, a value of tavrin_error_kind_value.
TAVRIN_EXPORT int tavrin_error_kind(const tavrin_error* error);
/// The error's message; NULL when the error has none. Lives as long as the error.
TAVRIN_EXPORT const char* tavrin_error_message(const tavrin_error* error);
/// The HTTP status of the answer that failed the exchange; 0 for none.
TAVRIN_EXPORT int tavrin_error_http_status(const tavrin_error* error);
/// The X-Request-Id of that answer, "" for none. Lives as long as the error.
TAVRIN_EXPORT const char* tavrin_error_request_id(const tavrin_error* error);
/// Why the transport failed, in libcurl's words, "" for none. Lives as long as the error.
TAVRIN_EXPORT const char* tavrin_error_transport_reason(const tavrin_error* error);
/// Releases an error; NULL is ignored.
TAVRIN_EXPORT void tavrin_error_free(tavrin_error* error);

/// Completes a prompt with the raw `status` (tavrin_authorization) the user's answer
/// leaves and, for a failed prompt, `error_description` (NULL for none; copied). Any
/// thread, once per prompt, which it releases; a run that stopped meanwhile ignores it.
/// Returns 0, or -1 for a NULL prompt or when memory runs out (the prompt is released
/// all the same, and the run waiting for it stops at its deadline or cancellation).
TAVRIN_EXPORT int tavrin_prompt_complete(tavrin_prompt* prompt, long long status,
                                         const char* error_description);
/// Answers a data query with the `length` bytes of JSON at `json` (copied), read as
/// that member of a device profile. Only during the describe callback that received
/// `answer`. Returns 0, or -1 for a NULL argument or a second answer. A malformed
/// answer fails the run with TAVRIN_ERROR_DEVICE_PROFILE and the offending pointer.
TAVRIN_EXPORT int tavrin_answer_json(tavrin_answer* answer, const char* json, size_t length);

/// Releases a string the library returned; NULL is ignored.
TAVRIN_EXPORT void tavrin_string_free(char* string);

#ifdef __cplusplus
}
#endif

// NOLINTEND(readability-identifier-naming, modernize-use-using, modernize-deprecated-headers)

#endif
