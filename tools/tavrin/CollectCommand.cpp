#include "Commands.hpp"

#include "ProgressDisplay.hpp"
#include "service/TavrinServiceCore.hpp"

#include <tavrin/error.hpp>
#include <tavrin/platform/Platform.hpp>

#include <chrono>
#include <cmath>
#include <fstream>
#include <iostream>
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
  std::string record;
  std::string profile;
  std::string caFile;
  std::vector<std::string> resolve;
  double timeoutSeconds = 60.0;
  std::string datasetOut;
  bool quiet = false;
};

ServiceOptions serviceOptions(const CollectArguments& arguments,
                              std::shared_ptr<CollectionObserver> observer) {
  ServiceOptions options;
  options.observer = std::move(observer);
  options.platform = choosePlatform(arguments.profile);
  options.caFile = arguments.caFile;
  options.resolve = arguments.resolve;
  options.requestTimeout = std::chrono::milliseconds(
      static_cast<std::int64_t>(std::ceil(arguments.timeoutSeconds * 1000.0)));
  return options;
}

// Writes the dataset file from inside the run, before the upload, so that
// nothing is uploaded that could not also be kept.
void writeDataset(const std::string& path, std::string_view json) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file.write(json.data(), static_cast<std::streamsize>(json.size())).flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

int collect(const CollectArguments& arguments) {
  TavrinServiceCore::DatasetObserver onDataset;
  if (!arguments.datasetOut.empty()) {
    onDataset = [&path = arguments.datasetOut](std::string_view json) { writeDataset(path, json); };
  }

  return runReportingFailure([&] {
    // Progress goes to standard error; the display ends its last line when it
    // goes, before the answer or the error is printed.
    const auto progress = arguments.quiet ? nullptr : std::make_shared<ProgressDisplay>();
    TavrinServiceCore service(arguments.url, arguments.key, serviceOptions(arguments, progress));
    const std::string answer = service.collectData(arguments.record, onDataset);
    if (progress) progress->finish();
    std::cout << answer << '\n';
    return ExitCode::success;
  });
}

}  // namespace

// Runs one collection against a scoring service and prints its answer.
Command addCollectCommand(CLI::App& app) {
  auto arguments = std::make_shared<CollectArguments>();
  auto* options = app.add_subcommand("collect", "Run one collection and print the server's answer");
  options->footer(
      "Exit status: 0 success; 2 usage error; 3 a device profile that cannot be loaded;\n"
      "10 + kind for a TavrinError (10 invalidInput ... 14 processingFailed);\n"
      "20 when the dataset cannot be written as JSON; 1 any other failure\n"
      "(such as a dataset file that cannot be written, which stops the run before the upload).");
  options->add_option("--url", arguments->url, "Base URL of the scoring service")->required();
  options->add_option("--key", arguments->key, "Authentication key")->required();
  options->add_option("--record", arguments->record, "Record number of this collection")
      ->required();
  options
      ->add_option("--profile", arguments->profile,
                   "Device profile to read instead of this Linux machine")
      ->check(CLI::ExistingFile);
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
  options->add_option("--dataset-out", arguments->datasetOut,
                      "Also write the uploaded JSON document to this file");
  options->add_flag("--quiet", arguments->quiet,
                    "Show no progress on standard error, only the answer or the error");
  return {options, [arguments] { return collect(*arguments); }};
}

}  // namespace tavrin::tool
