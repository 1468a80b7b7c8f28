#include "Commands.hpp"

#include <tavrin/service.hpp>

#include <nlohmann/json.hpp>

#include <iostream>

namespace tavrin::tool {

// Runs the permission step and the extraction, without any network, and prints
// the dataset exactly as a collection would upload it.
Command addDatasetCommand(CLI::App& app) {
  struct Options {
    DeviceChoice device;
    bool pretty = false;
  };
  auto options = std::make_shared<Options>();
  auto* command = app.add_subcommand("dataset", "Print the dataset a collection would upload");
  addDeviceOptions(*command, options->device);
  command->add_flag("--pretty", options->pretty, "Indent the JSON for reading");

  return {command, [options] {
            return runReportingFailure([&options] {
              ServiceOptions device;
              chooseDevice(options->device, device);
              const std::string json = previewDataset(device);
              if (options->pretty) {
                std::cout << nlohmann::json::parse(json).dump(2) << '\n';
              } else {
                std::cout << json << '\n';
              }
              return ExitCode::success;
            });
          }};
}

}  // namespace tavrin::tool
