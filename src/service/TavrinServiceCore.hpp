#pragma once

#include "codec/RawDeflate.hpp"
#include "collection/DataExtractorManager.hpp"
#include "collection/RunEvents.hpp"
#include "dataset/RunStop.hpp"
#include "net/CurlTransport.hpp"
#include "net/RestService.hpp"

#include <tavrin/options.hpp>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace tavrin {

// How a run encodes and sends its dataset. The defaults are the library's; the
// benchmarks run the alternatives beside them to measure what the defaults buy.
struct RunEngines {
  DeflateEngine deflate = DeflateEngine::libdeflate;
  CurlTransport::Connections connections = CurlTransport::Connections::kept;
};

// The device a service reads: the options' platform, else the Linux machine
// with the options' consent callback.
std::shared_ptr<platform::Platform> chosenPlatform(const ServiceOptions& options);

// The collection run behind TavrinService: owns the extraction manager and the
// REST client, and drives permissions, uniqueness check, extraction, JSON,
// compression, base64 and upload in that order. One run at a time, each under
// the deadline and open to cancel(); the constructor's login counts as a run.
class TavrinServiceCore {
 public:
  // Builds the manager, checks the URL and the options, creates the client and
  // logs in, in that order. Throws TavrinError: invalidInput "Url is incorrect"
  // before any traffic, invalidInput for an option out of range, or the
  // login's error.
  TavrinServiceCore(std::string url, std::string authKey, const ServiceOptions& options,
                    RunEngines engines = {});
  // Cancels a run of collectDataAsync still in progress and waits for it.
  ~TavrinServiceCore();
  TavrinServiceCore(const TavrinServiceCore&) = delete;
  TavrinServiceCore& operator=(const TavrinServiceCore&) = delete;

  // One collection run; returns the server's answer to the upload. Throws
  // TavrinError, or JsonWriteError when the dataset cannot be written as JSON.
  std::string collectData(const std::string& recordNumber);
  // collectData on a thread of the object's own; the future carries the outcome.
  std::future<std::string> collectDataAsync(std::string recordNumber);
  // The permissions step and the dataset's JSON, without any traffic.
  std::string previewDataset();
  // Stops the run in progress, or the next one at its start. Any thread.
  void cancel() noexcept { _stop.cancel(); }

 private:
  // Takes the one run of the object, or throws invalidInput.
  void claimRun();
  // Runs `step` as the claimed run, named `name` in the log: under the
  // deadline, open to cancel, its failure logged. Gives the run up at the end.
  template <typename Step>
  std::invoke_result_t<Step&> run(std::string_view name, Step&& step);
  // The seven steps of a collection.
  std::string collect(const std::string& recordNumber);

  std::shared_ptr<platform::Platform> _platform;
  RunEvents _events;
  std::chrono::milliseconds _deadline;
  RunStop _stop;
  std::atomic<bool> _running{false};
  DeflateEngine _deflateEngine;
  std::string _url;
  std::unique_ptr<RestService> _restService;
  DataExtractorManager dataExtractorManager;
  std::thread _asyncRun;  // the thread of the last collectDataAsync
};

// The settings of `options` that no other part checks: a deadline that is not
// negative. Throws TavrinError invalidInput otherwise.
void checkDeadline(const ServiceOptions& options);

}  // namespace tavrin
