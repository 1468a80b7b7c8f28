#pragma once

#include <tavrin/export.hpp>

#include <chrono>
#include <cstddef>
#include <string_view>

namespace tavrin {

/// How one exchange with the scoring service ended.
struct ExchangeOutcome {
  /// The HTTP status of the answer; 0 when the exchange failed in transport
  /// (no connection, TLS failure, time-out) and no answer arrived.
  int status = 0;
  /// True when the answer was the one the exchange asks for (a token pair,
  /// a boolean, a string); false for every refusal or unreadable answer.
  bool succeeded = false;
  /// The time from sending the request to the end of the answer.
  std::chrono::nanoseconds elapsed{};
};

/// Told how a TavrinService progresses, so that a host can show it: each data
/// source of a collection run as it starts and finishes, and each HTTPS
/// exchange (login, check, upload, a repeated login) as it starts and ends.
///
/// Every call comes on the thread that runs the operation (the caller of the
/// TavrinService constructor, collectData or previewDataset, or the library's
/// thread of collectDataAsync), one at a time; calls for one run come in order.
/// The observer must return quickly, must not call back into the service except
/// cancel(), and should not throw (an exception it throws is ignored). Every
/// member has an empty default, so an observer overrides only what it shows. A
/// service takes one through ServiceOptions::setObserver.
///
/// The class stays as it is for all of 1.x: later callbacks come in a class
/// derived from it, which the library recognises with dynamic_cast, so an
/// observer built against 1.0 keeps working.
class TAVRIN_EXPORT CollectionObserver {
 public:
  virtual ~CollectionObserver() = default;

  /// A data source starts reading; `name` is its section name, e.g. "Contacts".
  virtual void sourceStarted(std::string_view name);
  /// That data source is done: `entries` is the number of values its section
  /// holds (rows, or the one access-denied or error entry), `elapsed` the time
  /// it took.
  virtual void sourceFinished(std::string_view name, std::size_t entries,
                              std::chrono::nanoseconds elapsed);
  /// An exchange starts: `name` is "login", "check" or "upload".
  virtual void exchangeStarted(std::string_view name);
  /// That exchange ended, with or without an answer.
  virtual void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome);
  /// The dataset of a collection run, as the compact JSON that is compressed and
  /// uploaded next; `json` is valid during the call only. Calling cancel() here stops
  /// the run before anything is uploaded.
  virtual void datasetReady(std::string_view json);
};

}  // namespace tavrin
