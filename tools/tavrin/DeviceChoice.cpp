#include "Commands.hpp"

#include <iostream>
#include <string>

namespace tavrin::tool {
namespace {

// Asks on the terminal, one question per store; only an answer starting with
// y or Y grants, so that an empty line or the end of the input refuses.
bool askOnTerminal(const std::string& store) {
  std::cerr << "tavrin: allow reading the " << store << "? [y/N] " << std::flush;
  std::string answer;
  if (!std::getline(std::cin, answer)) {
    std::cerr << '\n';
    return false;
  }
  return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

}  // namespace

void addDeviceOptions(CLI::App& command, DeviceChoice& choice) {
  command.add_option("--profile", choice.profile, "Device profile to read instead of this machine")
      ->check(CLI::ExistingFile);
  command
      .add_option("--grant", choice.grant,
                  "This machine's stores not yet decided: all grants them, none (default) "
                  "denies them this time, ask asks on the terminal; an answer given is kept")
      ->check(CLI::IsMember({"all", "none", "ask"}));
}

void chooseDevice(const DeviceChoice& choice, ServiceOptions& options) {
  if (!choice.profile.empty()) {
    options.setPlatform(platform::loadDeviceProfile(choice.profile));
  } else if (choice.grant == "all") {
    options.setConsent([](const std::string&) { return true; });
  } else if (choice.grant == "ask") {
    options.setConsent(askOnTerminal);
  }
}

}  // namespace tavrin::tool
