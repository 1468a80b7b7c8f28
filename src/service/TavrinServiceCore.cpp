#include "service/TavrinServiceCore.hpp"

#include "collection/DatasetPipeline.hpp"
#include "collection/PermissionHeplper.hpp"
#include "collection/StatusResource.hpp"
#include "net/RequestUrl.hpp"
#include "service/ServiceUrl.hpp"
#include "service/UserAgent.hpp"

#include <exception>
#include <type_traits>

namespace tavrin {
namespace {

// The run's deadline and cancel flag, and its stop state on this thread, from
// the first step of a run to its end; then the object is free for the next run.
class RunFrame {
 public:
  RunFrame(RunStop& stop, std::chrono::milliseconds deadline, std::atomic<bool>& running)
      : _stop(stop), _running(running), _scope(stop) {
    _stop.beginRun(deadline);
  }
  ~RunFrame() {
    _stop.endRun();
    _running.store(false);
  }
  RunFrame(const RunFrame&) = delete;
  RunFrame& operator=(const RunFrame&) = delete;

 private:
  RunStop& _stop;
  std::atomic<bool>& _running;
  RunScope _scope;
};

}  // namespace

std::shared_ptr<platform::Platform> chosenPlatform(const ServiceOptions& options) {
  if (options.platform()) return options.platform();
  return platform::makeLinuxPlatform({}, options.consent());
}

void checkDeadline(const ServiceOptions& options) {
  if (options.deadline().count() < 0) {
    throw TavrinError(ErrorType::invalidInput, "Deadline must not be negative");
  }
}

TavrinServiceCore::TavrinServiceCore(std::string url, std::string authKey,
                                     const ServiceOptions& options, RunEngines engines)
    : _platform(chosenPlatform(options)),
      _events(options.observer(), options.log()),
      _deadline(options.deadline()),
      _deflateEngine(engines.deflate),
      dataExtractorManager(_platform) {
  dataExtractorManager.setEvents(_events);
  // The manager exists before the URL is judged, even when it is then rejected.
  // Text around the matched service URL must not send the key elsewhere: the
  // base URL has to lead to the very host the pattern matched, with nothing
  // added (a query, a fragment or user information would come from the text
  // around it).
  const auto serviceUrl = matchedServiceUrl(url);
  if (!serviceUrl || !sameDestination(url, *serviceUrl)) {
    throw TavrinError(ErrorType::invalidInput, std::string(StatusResource::urlIncorrectMessage));
  }
  checkDeadline(options);
  _url = std::move(url);
  _restService = std::make_unique<RestService>(
      _url, std::make_unique<CurlTransport>(
                options, userAgent(options.userAgent(), _platform->device()), engines.connections));
  _restService->setEvents(_events);
  claimRun();
  run("login", [&] { _restService->login(std::move(authKey)); });
}

TavrinServiceCore::~TavrinServiceCore() {
  if (_asyncRun.joinable()) {
    cancel();
    _asyncRun.join();
  }
}

std::string TavrinServiceCore::collectData(const std::string& recordNumber) {
  claimRun();
  return run("collection", [&] { return collect(recordNumber); });
}

std::future<std::string> TavrinServiceCore::collectDataAsync(std::string recordNumber) {
  std::promise<std::string> answer;
  std::future<std::string> future = answer.get_future();
  // The run is taken here, so that no other call slips in before the thread
  // starts; a refusal travels in the future, as every outcome does.
  try {
    claimRun();
  } catch (const TavrinError&) {
    answer.set_exception(std::current_exception());
    return future;
  }
  // The last run's thread has given the run up and is about to end.
  if (_asyncRun.joinable()) _asyncRun.join();
  try {
    _asyncRun = std::thread(
        [this, answer = std::move(answer), recordNumber = std::move(recordNumber)]() mutable {
          try {
            answer.set_value(run("collection", [&] { return collect(recordNumber); }));
          } catch (...) {
            answer.set_exception(std::current_exception());
          }
        });
  } catch (...) {
    _running.store(false);
    throw;
  }
  return future;
}

std::string TavrinServiceCore::previewDataset() {
  claimRun();
  return run("dataset preview",
             [&] { return DatasetPipeline::previewJson(*_platform, dataExtractorManager); });
}

void TavrinServiceCore::claimRun() {
  if (_running.exchange(true)) {
    throw TavrinError(ErrorType::invalidInput, "A collection of this service is already running");
  }
}

template <typename Step>
std::invoke_result_t<Step&> TavrinServiceCore::run(std::string_view name, Step&& step) {
  const RunFrame frame(_stop, _deadline, _running);
  const auto started = RunStop::Clock::now();
  const auto done = [&] {
    _events.log(LogLevel::info,
                std::string(name) + " done in " + milliseconds(RunStop::Clock::now() - started));
  };
  try {
    _stop.check();
    if constexpr (std::is_void_v<std::invoke_result_t<Step&>>) {
      step();
      done();
    } else {
      auto result = step();
      done();
      return result;
    }
  } catch (const std::exception& error) {
    _events.log(LogLevel::error, std::string(name) + " failed: " + error.what());
    throw;
  }
}

std::string TavrinServiceCore::collect(const std::string& recordNumber) {
  PermissionHeplper::requestPermissions(*_platform);

  RestService& client = *_restService;
  if (!client.withRelogin([&] { return client.checkUniqueness(recordNumber); })) {
    throw TavrinError(ErrorType::serverRejected,
                      std::string(StatusResource::recordNumberNotUniqueMessage));
  }

  const std::string data = [&] {
    MappedBuffer json = DatasetPipeline::datasetJson(dataExtractorManager);
    _events.datasetReady(json.view());
    return DatasetPipeline::uploadPayload(std::move(json), _events, _deflateEngine);
  }();
  return client.withRelogin([&] { return client.upload(data, recordNumber); });
}

}  // namespace tavrin
