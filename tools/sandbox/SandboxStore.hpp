#pragma once

#include "DatasetValidator.hpp"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace tavrin::sandbox {

// One upload as the sandbox recorded it.
struct StoredUpload {
  std::int64_t id = 0;
  std::string recordNumber;
  std::string receivedAt;  // UTC, ISO 8601
  std::string payload;     // the base64 text as received
  DecodedPayload decoded;  // sizes, inflated JSON, section counts and verdict
  bool accepted = false;
};

// The uploads a sandbox received, in SQLite: every upload with its payload, its
// decoded JSON, its sizes, its section counts and its verdict. A record number
// is taken once an upload for it was accepted. Safe to use from several threads.
class SandboxStore {
 public:
  // Opens (and creates, unless read-only) the database; ":memory:" keeps it in
  // memory. Throws std::runtime_error when the file cannot be opened.
  explicit SandboxStore(const std::string& path = ":memory:", bool readOnly = false);
  ~SandboxStore();
  SandboxStore(const SandboxStore&) = delete;
  SandboxStore& operator=(const SandboxStore&) = delete;

  // Whether an accepted upload holds the record number.
  bool isTaken(std::string_view recordNumber) const;

  // Records an upload; valid ones take their record number. Returns the
  // upload's id, or nothing when the upload was valid but its record number
  // had been taken meanwhile (nothing is stored then).
  std::optional<std::int64_t> record(std::string_view recordNumber, std::string_view payload,
                                     const DecodedPayload& decoded);

  // The accepted upload of a record number, else its latest refused one.
  std::optional<StoredUpload> find(std::string_view recordNumber) const;

  // Every upload, oldest first, without payloads and JSON.
  std::vector<StoredUpload> list() const;

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> _db;
  mutable std::mutex _mutex;
};

}  // namespace tavrin::sandbox
