#include "Commands.hpp"

#include "DatasetReport.hpp"
#include "DatasetValidator.hpp"
#include "SandboxStore.hpp"

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
};

// Prints the dataset as indented JSON; false when there is none to print.
bool printJson(const sandbox::DecodedPayload& decoded) {
  if (decoded.jsonSize == 0) {
    std::cerr << "error: " << decoded.problem.value_or("no dataset") << '\n';
    return false;
  }
  const auto document = nlohmann::json::parse(decoded.json, nullptr, false);
  if (document.is_discarded()) {
    std::cerr << "error: " << decoded.problem.value_or("not JSON") << '\n';
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
    const auto body = nlohmann::json::parse(text, nullptr, false);
    if (body.is_object() && body.contains("data") && body["data"].is_string()) {
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
                upload.receivedAt.c_str(), upload.recordNumber.c_str(), upload.decoded.jsonSize,
                upload.decoded.valid() ? "valid" : upload.decoded.problem->c_str());
  }
  return 0;
}

int runInspect(const InspectArguments& arguments) {
  sandbox::DecodedPayload decoded;
  try {
    if (!arguments.database.empty()) {
      const sandbox::SandboxStore store(arguments.database, true);
      if (arguments.recordNumber.empty()) return listUploads(store);
      auto upload = store.find(arguments.recordNumber);
      if (!upload) {
        std::cerr << "error: no upload for record " << arguments.recordNumber << " in "
                  << arguments.database << '\n';
        return 2;
      }
      if (!arguments.json) {
        std::printf("record %s: upload %lld received %s, %s\n", upload->recordNumber.c_str(),
                    static_cast<long long>(upload->id), upload->receivedAt.c_str(),
                    upload->accepted ? "accepted" : "refused");
      }
      decoded = std::move(upload->decoded);
    } else {
      decoded = sandbox::DatasetValidator(arguments.maxDatasetSize)
                    .decode(readPayload(arguments.payloadFile));
    }
  } catch (const std::exception& error) {
    std::cerr << "error: " << error.what() << '\n';
    return 2;
  }
  if (arguments.json) {
    if (!printJson(decoded)) return 1;
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
  command->add_option("--max-dataset", arguments->maxDatasetSize,
                      "Largest inflated dataset in bytes");
  return {command, [arguments] { return runInspect(*arguments); }};
}

}  // namespace tavrin::tool
