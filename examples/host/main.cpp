// A host application in miniature: it links the installed tavrinsdk, reads a
// device (a device profile, or the Linux machine it runs on), collects one
// record against a scoring service and prints the service's answer.
//
//   tavrin-host --url URL --key KEY --record NUMBER
//               [--ca-file PEM] [--resolve HOST:PORT:ADDRESS]... [--profile JSON]
//
// The three options `tavrin sandbox` prints on its ready line (--url, --resolve,
// --ca-file) can be passed as they are.
//
// Exit status: 0 the answer was printed; 1 the collection failed (the kind and
// message are printed); 2 wrong arguments; 3 the device profile cannot be loaded.
#include <tavrin/tavrin.hpp>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

namespace {

struct Arguments {
  std::string url, key, record, profile;
  tavrin::ServiceOptions options;
};

const char* const usage =
    "usage: tavrin-host --url URL --key KEY --record NUMBER [--ca-file PEM]\n"
    "                   [--resolve HOST:PORT:ADDRESS]... [--profile JSON]\n";

// The arguments, or absent (after saying why) when they are not usable.
std::optional<Arguments> parse(int argc, char** argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--help" || option == "-h") {
      std::cout << usage;
      std::exit(0);
    }
    if (i + 1 == argc) {
      std::cerr << "tavrin-host: " << option << " needs a value\n" << usage;
      return std::nullopt;
    }
    std::string value = argv[++i];
    if (option == "--url") {
      arguments.url = std::move(value);
    } else if (option == "--key") {
      arguments.key = std::move(value);
    } else if (option == "--record") {
      arguments.record = std::move(value);
    } else if (option == "--ca-file") {
      arguments.options.setCaFile(std::move(value));
    } else if (option == "--resolve") {
      auto entries = arguments.options.resolve();
      entries.push_back(std::move(value));
      arguments.options.setResolve(std::move(entries));
    } else if (option == "--profile") {
      arguments.profile = std::move(value);
    } else {
      std::cerr << "tavrin-host: unknown option " << option << '\n' << usage;
      return std::nullopt;
    }
  }
  if (arguments.url.empty() || arguments.key.empty() || arguments.record.empty()) {
    std::cerr << "tavrin-host: --url, --key and --record are required\n" << usage;
    return std::nullopt;
  }
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  std::optional<Arguments> arguments = parse(argc, argv);
  if (!arguments) return 2;

  // A device profile describes a whole phone; without one the library reads
  // the Linux machine it runs on (a null platform).
  if (!arguments->profile.empty()) {
    try {
      arguments->options.setPlatform(tavrin::platform::loadDeviceProfile(arguments->profile));
    } catch (const tavrin::platform::DeviceProfileError& error) {
      std::cerr << "tavrin-host: " << error.what() << '\n';
      return 3;
    }
  }

  try {
    // Logs in; both calls block until the server has answered.
    tavrin::TavrinService service(arguments->url, arguments->key, std::move(arguments->options));
    std::cout << service.collectData(arguments->record) << '\n';
    return 0;
  } catch (const tavrin::TavrinError& error) {
    // what() names the kind and gives the message.
    std::cerr << "tavrin-host: " << error.what() << '\n';
  } catch (const tavrin::JsonWriteError& error) {
    std::cerr << "tavrin-host: the dataset cannot be written: " << error.what() << '\n';
  }
  return 1;
}
