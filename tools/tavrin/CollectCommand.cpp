#include "Commands.hpp"

#include "ProgressDisplay.hpp"
#include "escapeControls.hpp"

#include <tavrin/error.hpp>
#include <tavrin/service.hpp>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::tool {
namespace {

struct CollectArguments {
  std::string url;
  std::string key;
  std::string keyFile;
  std::string record;
  DeviceChoice device;
  std::string caFile;
  std::vector<std::string> resolve;
  double timeoutSeconds = 60.0;
  double deadlineSeconds = 0.0;
  std::string datasetOut;
  bool quiet = false;
  bool verbose = false;
};

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(seconds * 1000.0)));
}

// The key from --key-file (its first line), --key or TAVRIN_KEY, in that order.
// Throws std::runtime_error when there is none or the file cannot be read.
std::string authenticationKey(const CollectArguments& arguments) {
  if (!arguments.keyFile.empty()) {
    std::ifstream file(arguments.keyFile, std::ios::binary);
    std::string key;
    if (!file || !std::getline(file, key)) {
      throw std::runtime_error("cannot read a key from " + arguments.keyFile);
    }
    if (key.ends_with('\r')) key.pop_back();
    return key;
  }
  if (!arguments.key.empty()) return arguments.key;
  if (const char* key = std::getenv("TAVRIN_KEY")) return key;
  throw std::runtime_error("no key: give --key-file FILE or set TAVRIN_KEY");
}

// Writes the dataset file from inside the run, before the upload, so that
// nothing is uploaded that could not also be kept: a file that cannot be
// written cancels the run.
class DatasetFile : public CollectionObserver {
 public:
  explicit DatasetFile(std::string path) : _path(std::move(path)) {}

  void datasetReady(std::string_view json) override {
    std::ofstream file(_path, std::ios::binary | std::ios::trunc);
    if (!file.write(json.data(), static_cast<std::streamsize>(json.size())).flush()) {
      _failed = true;
      if (_service != nullptr) _service->cancel();
    }
  }
  void watch(TavrinService& service) { _service = &service; }
  // Throws the write failure that cancelled the run, if there was one.
  void throwIfFailed() const {
    if (_failed) throw std::runtime_error("cannot write " + _path);
  }

 private:
  std::string _path;
  TavrinService* _service = nullptr;
  bool _failed = false;
};

// The tool's observers: the progress display and the dataset file, each when asked for.
class Observers : public CollectionObserver {
 public:
  Observers(std::shared_ptr<ProgressDisplay> progress, std::shared_ptr<DatasetFile> dataset)
      : _progress(std::move(progress)), _dataset(std::move(dataset)) {}

  void sourceStarted(std::string_view name) override {
    if (_progress) _progress->sourceStarted(name);
  }
  void sourceFinished(std::string_view name, std::size_t entries,
                      std::chrono::nanoseconds elapsed) override {
    if (_progress) _progress->sourceFinished(name, entries, elapsed);
  }
  void exchangeStarted(std::string_view name) override {
    if (_progress) _progress->exchangeStarted(name);
  }
  void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) override {
    if (_progress) _progress->exchangeFinished(name, outcome);
  }
  void datasetReady(std::string_view json) override {
    if (_dataset) _dataset->datasetReady(json);
  }

 private:
  std::shared_ptr<ProgressDisplay> _progress;
  std::shared_ptr<DatasetFile> _dataset;
};

int collect(const CollectArguments& arguments) {
  return runReportingFailure([&] {
    // Progress goes to standard error; the display ends its last line when it
    // goes, before the answer or the error is printed.
    const auto progress = arguments.quiet ? nullptr : std::make_shared<ProgressDisplay>();
    const auto dataset = arguments.datasetOut.empty()
                             ? nullptr
                             : std::make_shared<DatasetFile>(arguments.datasetOut);
    ServiceOptions options;
    chooseDevice(arguments.device, options);
    options.setCaFile(arguments.caFile)
        .setResolve(arguments.resolve)
        .setRequestTimeout(milliseconds(arguments.timeoutSeconds))
        .setDeadline(milliseconds(arguments.deadlineSeconds))
        .setObserver(std::make_shared<Observers>(progress, dataset));
    if (arguments.verbose) {
      options.setLog([](LogLevel level, std::string_view line) {
        std::cerr << "tavrin: " << logLevelName(level) << ": " << escapeControls(line) << '\n';
      });
    }

    TavrinService service(arguments.url, authenticationKey(arguments), options);
    if (dataset) dataset->watch(service);
    std::string answer;
    try {
      answer = service.collectData(arguments.record);
    } catch (const TavrinError&) {
      if (dataset) dataset->throwIfFailed();
      throw;
    }
    if (progress) progress->finish();
    std::cout << escapeControls(answer) << '\n';
    return ExitCode::success;
  });
}

}  // namespace

// Runs one collection against a scoring service and prints its answer.
Command addCollectCommand(CLI::App& app) {
  auto arguments = std::make_shared<CollectArguments>();
  auto* options = app.add_subcommand("collect", "Run one collection and print the server's answer");
  options->footer(
      "The key comes from --key-file, --key or the environment variable TAVRIN_KEY, in that\n"
      "order; prefer the file or the variable, which stay out of ps and the shell's history.\n"
      "Text from the server is printed with control characters escaped.\n"
      "Exit status: 0 success; 2 usage error; 3 a device profile that cannot be loaded;\n"
      "10 + kind for a TavrinError (10 invalidInput ... 14 processingFailed, 15 cancelled);\n"
      "20 when the dataset cannot be written as JSON; 1 any other failure\n"
      "(such as a dataset file that cannot be written, which stops the run before the upload).");
  options->add_option("--url", arguments->url, "Base URL of the scoring service")->required();
  auto* keyFile = options
                      ->add_option("--key-file", arguments->keyFile,
                                   "File whose first line is the authentication key")
                      ->check(CLI::ExistingFile);
  options
      ->add_option("--key", arguments->key,
                   "Authentication key (visible to other users in ps: prefer --key-file or "
                   "TAVRIN_KEY)")
      ->excludes(keyFile);
  options->add_option("--record", arguments->record, "Record number of this collection")
      ->required();
  addDeviceOptions(*options, arguments->device);
  options
      ->add_option("--ca-file", arguments->caFile,
                   "PEM file of CA certificates to trust instead of the system store")
      ->check(CLI::ExistingFile);
  options
      ->add_option("--resolve", arguments->resolve,
                   "HOST:PORT:ADDRESS to use instead of name resolution (repeatable)")
      ->allow_extra_args(false);
  options
      ->add_option("--timeout", arguments->timeoutSeconds,
                   "Seconds a request may stay idle before it fails (default 60)")
      ->check(CLI::Range(0.001, 1.0e6));
  options
      ->add_option("--deadline", arguments->deadlineSeconds,
                   "Seconds the login, and then the whole collection, may take (default: no limit)")
      ->check(CLI::Range(0.001, 1.0e6));
  options->add_option("--dataset-out", arguments->datasetOut,
                      "Also write the uploaded JSON document to this file");
  options->add_flag("--quiet", arguments->quiet,
                    "Show no progress on standard error, only the answer or the error");
  options->add_flag("--verbose", arguments->verbose,
                    "Print the library's log lines on standard error");
  return {options, [arguments] { return collect(*arguments); }};
}

}  // namespace tavrin::tool
