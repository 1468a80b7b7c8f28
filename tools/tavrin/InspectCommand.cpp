#include "Commands.hpp"

#include "BoundedJson.hpp"
#include "DatasetReport.hpp"
#include "DatasetValidator.hpp"
#include "SandboxStore.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>

namespace tavrin::tool {

namespace {

struct InspectArguments {
  std::string payloadFile = "-";
  std::string database;
  std::string recordNumber;
  bool json = false;
  std::size_t maxDatasetSize = sandbox::DatasetValidator::defaultMaxJsonSize;
  std::size_t maxInflationRatio = sandbox::DatasetValidator::defaultMaxInflationRatio;
};

// Prints the dataset as indented JSON, parsed within the validator's limits;
// false when there is none to print.
bool printJson(const sandbox::DecodedPayload& decoded, const sandbox::DatasetValidator& validator) {
  nlohmann::json document;
  const auto problem = decoded.json.empty() ? decoded.problem.value_or("no dataset")
                                            : validator.parse(decoded.json, document);
  if (problem) {
    std::cerr << "error: " << *problem << '\n';
    return false;
  }
  std::cout << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  return true;
}

// The base64 text of a payload file: the text itself, or the "data" member
// of an upload's request body; surrounding blanks and line breaks dropped.
std::string readPayload(const std::string& file) {
  std::string text;
  if (file == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), {});
  } else {
    std::ifstream input(file, std::ios::binary);
    if (!input) throw std::runtime_error("cannot read " + file);
    text.assign(std::istreambuf_iterator<char>(input), {});
  }
  const auto first = text.find_first_not_of(" \t\r\n");
  const auto last = text.find_last_not_of(" \t\r\n");
  text = first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
  if (text.starts_with('{')) {
    nlohmann::json body;
    if (!sandbox::parseBoundedJson(text, {4, 64}, body) && body.is_object() &&
        body.contains("data") && body["data"].is_string()) {
      return body["data"].get<std::string>();
    }
  }
  return text;
}

int listUploads(const sandbox::SandboxStore& store) {
  std::printf("%6s  %-24s  %-24s  %10s  %s\n", "upload", "received", "record", "JSON bytes",
              "verdict");
  for (const auto& upload : store.list()) {
    std::printf("%6lld  %-24s  %-24s  %10zu  %s\n", static_cast<long long>(upload.id),
                upload.receivedAt.c_str(),
                platform::printableExcerpt(upload.recordNumber, 64).c_str(),
                upload.decoded.jsonSize,
                platform::printableExcerpt(upload.decoded.problem.value_or("valid"), 1024).c_str());
  }
  return 0;
}

int runInspect(const InspectArguments& arguments) {
  const sandbox::DatasetValidator validator(arguments.maxDatasetSize,
                                            sandbox::DatasetValidator::defaultMaxJsonValues,
                                            arguments.maxInflationRatio);
  sandbox::DecodedPayload decoded;
  try {
    if (!arguments.database.empty()) {
      const sandbox::SandboxStore store(arguments.database, {}, true);
      if (arguments.recordNumber.empty()) return listUploads(store);
      auto upload = store.find(arguments.recordNumber);
      if (!upload) {
        std::cerr << "error: no upload for record "
                  << platform::printableExcerpt(arguments.recordNumber, 64) << " in "
                  << platform::printableExcerpt(arguments.database, 1024) << '\n';
        return 2;
      }
      if (!arguments.json) {
        std::printf("record %s: upload %lld received %s, %s\n",
                    platform::printableExcerpt(upload->recordNumber, 64).c_str(),
                    static_cast<long long>(upload->id), upload->receivedAt.c_str(),
                    upload->accepted ? "accepted" : "refused");
      }
      decoded = std::move(upload->decoded);
      // Only the payload is stored: the JSON is inflated again to be shown.
      if (arguments.json) decoded.json = validator.decode(upload->payload).json;
    } else {
      decoded = validator.decode(readPayload(arguments.payloadFile));
    }
  } catch (const std::exception& error) {
    std::cerr << "error: " << platform::printableExcerpt(error.what(), 1024) << '\n';
    return 2;
  }
  if (arguments.json) {
    if (!printJson(decoded, validator)) return 1;
  } else {
    printDatasetReport(decoded);
  }
  return decoded.valid() ? 0 : 1;
}

}  // namespace

// Decodes an uploaded dataset from a payload or a sandbox database and
// reports its sections and verdict; exits 0 when valid, 1 when not.
Command addInspectCommand(CLI::App& app) {
  auto* command = app.add_subcommand(
      "inspect",
      "Decode an uploaded dataset (a base64 payload, or a record of a sandbox database) and "
      "show its sections, row counts and verdict");
  auto arguments = std::make_shared<InspectArguments>();
  auto* payload = command->add_option(
      "payload", arguments->payloadFile,
      "File with the base64 payload or an upload's request body; - for standard input");
  auto* database = command->add_option("--db", arguments->database, "A sandbox's SQLite database")
                       ->check(CLI::ExistingFile);
  command
      ->add_option("--record", arguments->recordNumber,
                   "The record number to show from --db (default: list every upload)")
      ->needs(database);
  payload->excludes(database);
  command->add_flag("--json", arguments->json, "Print the dataset itself as indented JSON");
  command
      ->add_option("--max-dataset", arguments->maxDatasetSize, "Largest inflated dataset in bytes")
      ->check(CLI::Range(std::size_t{1}, std::size_t{16} << 30));
  command
      ->add_option("--max-inflation-ratio", arguments->maxInflationRatio,
                   "Most times its DEFLATE bytes a dataset may inflate to, beyond 1 MiB")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 30));
  return {command, [arguments] { return runInspect(*arguments); }};
}

}  // namespace tavrin::tool
