// Extraction of a large address book: 20,000 contacts with 3 phone numbers,
// 2 e-mail addresses, 1 postal address and 1 social profile each, read from a
// generated device profile. Reports contact rows (items) and all rows
// (contacts and their entries) per second; the resident memory that the
// extractions add at their peak over what the loaded phone holds (peakMiB),
// the size of the section one extraction produces (sectionMiB) and, for
// scale, the memory the loaded address book itself takes (profileMiB).

#include "ResidentMemory.hpp"

#include "extractors/ContactExtractor.hpp"
#include "os/releaseFreedHeap.hpp"

#include <tavrin/platform/Platform.hpp>

#include <benchmark/benchmark.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace tavrin {
namespace {

constexpr int contactCount = 20'000;
// One contact row and its 3 + 2 + 1 + 1 entry rows.
constexpr int rowsPerContact = 8;
constexpr double mebibyte = 1024.0 * 1024.0;

// Predefined labels travel as text, custom ones become category ids; a few
// are not ASCII and take the normalization path.
const char* const phoneLabels[] = {"_$!<Mobile>!$_", "_$!<Home>!$_", "_$!<Work>!$_", "Office",
                                   "Bureau",         "B\u00fcro",    "Cafe\u0301",   "Weekend"};

nlohmann::json labeledText(const std::string& identifier, const char* label,
                           const std::string& value) {
  return {{"identifier", identifier}, {"label", label}, {"value", value}};
}

nlohmann::json generatedContact(int n) {
  const std::string id = "contact-" + std::to_string(n);
  nlohmann::json contact = {
      {"identifier", id},
      {"birthday", 86400.0 * (n % 20000)},
      {"givenName", "Given " + std::to_string(n)},
      {"familyName", "Family " + std::to_string(n)},
      {"organizationName", n % 3 == 0 ? "Company" : ""},
      {"note", n % 5 == 0 ? "A note" : ""},
      {"imageDataAvailable", n % 2 == 0},
  };
  for (int i = 0; i < 3; ++i) {
    contact["phoneNumbers"].push_back(
        labeledText(id + "-phone-" + std::to_string(i),
                    phoneLabels[static_cast<std::size_t>(n + i) % std::size(phoneLabels)],
                    "+49 30 " + std::to_string(1000000 + n * 3 + i)));
  }
  contact["emailAddresses"].push_back(labeledText(id + "-email-0", "_$!<Home>!$_", "a@b.example"));
  contact["emailAddresses"].push_back(
      labeledText(id + "-email-1", phoneLabels[static_cast<std::size_t>(n) % 8], "c@d.example"));
  contact["postalAddresses"].push_back({{"identifier", id + "-postal"},
                                        {"label", "_$!<Home>!$_"},
                                        {"value",
                                         {{"street", "Hauptstra\u00dfe " + std::to_string(n % 200)},
                                          {"city", "Berlin"},
                                          {"postalCode", "10115"},
                                          {"country", "Deutschland"},
                                          {"isoCountryCode", "de"}}}});
  contact["socialProfiles"].push_back(
      {{"identifier", id + "-social"},
       {"label", n % 4 == 0 ? nlohmann::json(nullptr) : nlohmann::json("_$!<Twitter>!$_")},
       {"value", {{"service", "Twitter"}, {"username", "user" + std::to_string(n)}}}});
  return contact;
}

struct AddressBook {
  std::shared_ptr<platform::Platform> platform;
  double profileBytes = 0;   // resident memory the loaded profile takes
  double baselineBytes = 0;  // resident memory before the first extraction
  bool peakKnown = false;    // whether the peak count could be restarted there
};

// The profile is written as JSON text to a temporary file and loaded, as a
// test profile would be; it is built once for every run of the benchmark.
const AddressBook& addressBook() {
  static const AddressBook book = [] {
    nlohmann::json profile = {{"device", {{"systemVersion", "12.4"}}},
                              {"permissions", {{"contacts", {{"status", 3}}}}}};
    nlohmann::json& list = profile["contacts"]["list"];
    for (int n = 0; n < contactCount; ++n) list.push_back(generatedContact(n));
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        ("tavrin-contacts-bench-" + std::to_string(getpid()) + ".json");
    std::ofstream(path) << profile.dump();
    profile = nullptr;
    // Hand back what generating the text freed, and later what reading it
    // freed, so that only what the loaded phone holds is counted, and the
    // extractions must take fresh pages that show up in the peak.
    os::releaseFreedHeap();
    const double before = static_cast<double>(sandbox::ResidentMemory::current());
    AddressBook loaded{platform::loadDeviceProfile(path.string())};
    std::filesystem::remove(path);
    os::releaseFreedHeap();
    loaded.profileBytes = static_cast<double>(sandbox::ResidentMemory::current()) - before;
    loaded.peakKnown = sandbox::ResidentMemory::resetPeak();
    loaded.baselineBytes = static_cast<double>(sandbox::ResidentMemory::current());
    return loaded;
  }();
  return book;
}

void BM_ContactExtraction(benchmark::State& state) {
  const AddressBook& book = addressBook();
  ContactExtractor extractor(*book.platform);
  double sectionBytes = 0;
  for (auto _ : state) {
    Element section = extractor.extract();
    if (section.ChildElements().size() != contactCount) {
      state.SkipWithError("the extraction did not give one row per contact");
      break;
    }
    sectionBytes = static_cast<double>(section.ChildElements().capacityBytes());
    benchmark::DoNotOptimize(section);
  }
  const auto iterations = static_cast<double>(state.iterations());
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * contactCount);
  state.counters["rows/s"] =
      benchmark::Counter(iterations * contactCount * rowsPerContact, benchmark::Counter::kIsRate);
  state.counters["sectionMiB"] = sectionBytes / mebibyte;
  state.counters["profileMiB"] = book.profileBytes / mebibyte;
  if (book.peakKnown) {
    state.counters["peakMiB"] =
        (static_cast<double>(sandbox::ResidentMemory::peak()) - book.baselineBytes) / mebibyte;
  }
}
BENCHMARK(BM_ContactExtraction)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin
