#include "Commands.hpp"

#include "generator/DeviceProfileWriter.hpp"
#include "generator/ProfileGenerator.hpp"

#include <fstream>
#include <iostream>
#include <map>

namespace tavrin::tool {

// `tavrin profile generate`: writes the device profile of a phone of any
// size, the same bytes for the same options and seed.
Command addProfileCommand(CLI::App& app) {
  struct Options {
    std::string preset = "typical";
    GeneratorOptions sizes;
    std::string output;
  };
  auto options = std::make_shared<Options>();
  auto* profile = app.add_subcommand("profile", "Work with device profiles");
  profile->require_subcommand(1);
  auto* generate = profile->add_subcommand(
      "generate", "Write the device profile of a generated phone, deterministic for --seed");
  generate->add_option("--preset", options->preset, "Sizes to start from")
      ->check(CLI::IsMember({"small", "typical", "large"}))
      ->capture_default_str();
  generate->add_option("--seed", options->sizes.seed, "Seed of the phone")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  // A size given on the command line replaces the preset's.
  struct Size {
    const char* name;
    std::size_t GeneratorOptions::*field;
    const char* help;
  };
  static constexpr Size sizes[] = {
      {"--contacts", &GeneratorOptions::contacts, "Address-book contacts"},
      {"--groups", &GeneratorOptions::groups, "Contact groups"},
      {"--calendars", &GeneratorOptions::calendars, "Event calendars (and half as many lists)"},
      {"--events", &GeneratorOptions::events, "Event rows a collection reads (occurrences count)"},
      {"--reminders", &GeneratorOptions::reminders, "Reminders"},
      {"--assets", &GeneratorOptions::assets, "Photo-library assets"},
      {"--albums", &GeneratorOptions::albums, "Albums, smart albums and moments"},
      {"--devices", &GeneratorOptions::devices, "Capture devices"},
  };
  // Ten million of anything is far beyond a phone and still fits in memory;
  // the range also keeps a negative number from wrapping round to a huge size.
  constexpr std::int64_t mostOfAnything = 10'000'000;
  auto given = std::make_shared<std::map<std::string, std::size_t>>();
  for (const auto& size : sizes) {
    generate
        ->add_option_function<std::size_t>(
            size.name, [given, name = size.name](std::size_t value) { (*given)[name] = value; },
            size.help)
        ->check(CLI::Range(std::int64_t{0}, mostOfAnything));
  }
  generate->add_flag("--markers", options->sizes.markers,
                     "Make every personal text a unique marker (PII-kind-N)");
  generate->add_option("--output,-o", options->output, "File to write (default: standard output)");

  return {profile, [options, given] {
            auto chosen = presetOptions(*presetNamed(options->preset));
            chosen.seed = options->sizes.seed;
            chosen.markers = options->sizes.markers;
            for (const auto& size : sizes) {
              if (const auto it = given->find(size.name); it != given->end()) {
                chosen.*size.field = it->second;
              }
            }
            auto generated = ProfileGenerator(chosen).generate();
            generated.description = "A generated phone (" + options->preset + ", seed " +
                                    std::to_string(chosen.seed) + ")";
            if (options->output.empty()) {
              writeDeviceProfile(generated, std::cout);
              std::cout.flush();
              return std::cout ? ExitCode::success : ExitCode::output;
            }
            std::ofstream file(options->output, std::ios::binary | std::ios::trunc);
            if (file) writeDeviceProfile(generated, file);
            file.close();
            if (!file) {
              std::cerr << "error: cannot write " << options->output << '\n';
              return ExitCode::output;
            }
            return ExitCode::success;
          }};
}

}  // namespace tavrin::tool
