#pragma once

#include "DatasetValidator.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace tavrin::sandbox {

// One upload as the sandbox recorded it.
struct StoredUpload {
  std::int64_t id = 0;
  std::string recordNumber;
  std::string receivedAt;  // UTC, ISO 8601
  std::string payload;     // the base64 text as received
  DecodedPayload decoded;  // sizes, section counts and verdict; the JSON is not kept
  bool accepted = false;
};

// How long the store waits and how far it grows.
struct StoreLimits {
  // How long a statement waits for a lock another connection holds (a reader
  // such as `tavrin inspect`) before it fails as busy.
  std::chrono::milliseconds busyTimeout{2000};
  // The size in bytes the database file may reach; 0: as large as the disk allows.
  std::uint64_t maxSize = 0;
};

// Why the store could not answer. Whatever failed, the transaction it was in
// has been rolled back and the store stays usable.
class StoreError : public std::runtime_error {
 public:
  enum class Kind {
    busy,    // another connection held the database beyond the busy timeout
    full,    // the database reached its size limit, or the disk is full
    failed,  // anything else, such as an I/O error
  };
  StoreError(Kind kind, const std::string& what) : std::runtime_error(what), _kind(kind) {}
  Kind kind() const { return _kind; }

 private:
  Kind _kind;
};

// The uploads a sandbox received, in SQLite: every upload with its payload as
// received (the JSON is inflated again on demand), its sizes, its section
// counts and its verdict. A record number is taken once an upload for it was
// accepted. Safe to use from several threads; every failure throws StoreError.
class SandboxStore {
 public:
  // Opens (and creates, unless read-only) the database; ":memory:" keeps it in
  // memory, and a "file:" URI may name a VFS. A wait for a lock ends early
  // once `stop` (when given) is raised. Throws StoreError when the file cannot
  // be opened.
  explicit SandboxStore(const std::string& path = ":memory:", const StoreLimits& limits = {},
                        bool readOnly = false, const std::atomic<bool>* stop = nullptr);
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

  // The upload with this id, with its payload and section counts.
  std::optional<StoredUpload> upload(std::int64_t id) const;

  // Every upload, oldest first, without payloads.
  std::vector<StoredUpload> list() const;

 private:
  std::optional<std::int64_t> insert(std::string_view recordNumber, std::string_view payload,
                                     const DecodedPayload& decoded);

  // The upload of the query's row (its columns, then the payload) with its
  // section counts; the caller holds the lock.
  std::optional<StoredUpload> readWhole(sqlite3_stmt* query) const;

  // SQLite's busy handler: waits for a lock in short naps.
  static int waitForLock(void* store, int attempt);

  std::unique_ptr<sqlite3, int (*)(sqlite3*)> _db;
  StoreLimits _limits;
  const std::atomic<bool>* _stop;
  mutable std::mutex _mutex;
};

}  // namespace tavrin::sandbox
