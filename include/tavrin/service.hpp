#pragma once

#include <tavrin/export.hpp>
#include <tavrin/options.hpp>

#include <future>
#include <memory>
#include <string>

namespace tavrin {

class TavrinServiceCore;

/// The library's entry point: one object per base URL and key, logged in once, then
/// one collection run per record number. One run at a time per object: a call that
/// would start a second run while one is in progress throws TavrinError invalidInput
/// (collectDataAsync: its future does). cancel() may be called from any thread; the
/// other members from one thread at a time. Separate objects share nothing. Not
/// copyable or movable: hold it in a smart pointer to share or pass it on.
class TAVRIN_EXPORT TavrinService {
 public:
  /// Checks the URL and logs in with the key, reading the Linux machine the library
  /// runs on. Blocks until the login is answered. Throws TavrinError: invalidInput
  /// "Url is incorrect" before any traffic, or the login's error; no object exists then.
  TavrinService(std::string url, std::string authKey);
  /// The same, with the device, trust, time limits and reporting of `options`. Throws
  /// TavrinError invalidInput as well for an option outside its valid values.
  TavrinService(std::string url, std::string authKey, const ServiceOptions& options);
  /// Cancels a run of collectDataAsync still in progress and waits for its thread.
  ~TavrinService();
  TavrinService(const TavrinService&) = delete;
  TavrinService& operator=(const TavrinService&) = delete;

  /// Asks for undecided permissions, checks that the record number is unused, collects
  /// the dataset and uploads it; returns the server's answer. Blocks the calling thread
  /// until then. Throws TavrinError (cancelled after cancel(), connectionFailed "Deadline
  /// exceeded" past the deadline), or JsonWriteError when the dataset cannot be written
  /// as JSON. A failed run leaves the object usable.
  std::string collectData(const std::string& recordNumber);

  /// collectData on a thread the library owns; returns at once. The future carries the
  /// answer or the exception collectData would throw. Observer and log calls of the run
  /// come on that thread.
  std::future<std::string> collectDataAsync(std::string recordNumber);

  /// Stops the run in progress at its next safe point, within 100 ms even while it waits
  /// for a prompt or a server; that run throws TavrinError cancelled. With no run in
  /// progress, the next run stops at its start instead. Returns at once; any thread.
  void cancel() noexcept;

  /// The JSON document collectData would compress and upload at this moment, made
  /// without any network traffic. Asks for undecided permissions as collectData does,
  /// and stops as it does. Throws TavrinError or JsonWriteError.
  std::string previewDataset();

 private:
  std::unique_ptr<TavrinServiceCore> _tavrinService;
};

/// The JSON document a TavrinService made with `options` would upload for its device at
/// this moment, made without a service object, a login or any network traffic; only the
/// secret rotation of photo positions is drawn afresh for each call. Asks for undecided
/// permissions and keeps the deadline of `options`. Blocks until done; any thread. Throws
/// TavrinError or JsonWriteError.
TAVRIN_EXPORT std::string previewDataset(const ServiceOptions& options);

}  // namespace tavrin
