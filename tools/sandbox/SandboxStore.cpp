#include "SandboxStore.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <thread>

namespace tavrin::sandbox {

namespace {

// Uploads keep their payload as received; the inflated JSON, up to a thousand
// times larger, is not stored. (Databases of earlier versions have a "dataset"
// column, which is left empty.)
constexpr const char* schema = R"sql(
CREATE TABLE IF NOT EXISTS uploads (
  id INTEGER PRIMARY KEY,
  record_number TEXT NOT NULL,
  received_at TEXT NOT NULL DEFAULT (strftime('%Y-%m-%dT%H:%M:%fZ', 'now')),
  payload TEXT NOT NULL,
  base64_size INTEGER NOT NULL,
  deflate_size INTEGER NOT NULL,
  json_size INTEGER NOT NULL,
  verdict TEXT NOT NULL,
  accepted INTEGER NOT NULL
);
CREATE UNIQUE INDEX IF NOT EXISTS accepted_record_number
  ON uploads (record_number) WHERE accepted;
CREATE TABLE IF NOT EXISTS sections (
  upload_id INTEGER NOT NULL REFERENCES uploads (id),
  position INTEGER NOT NULL,
  name TEXT NOT NULL,
  entries INTEGER NOT NULL,
  note TEXT NOT NULL,
  PRIMARY KEY (upload_id, position)
);
)sql";

constexpr std::string_view validVerdict = "valid";

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

[[noreturn]] void fail(sqlite3* db, const std::string& what) {
  const int code = sqlite3_errcode(db);
  const auto kind = code == SQLITE_BUSY || code == SQLITE_LOCKED ? StoreError::Kind::busy
                    : code == SQLITE_FULL                        ? StoreError::Kind::full
                                                                 : StoreError::Kind::failed;
  throw StoreError(kind, what + ": " + sqlite3_errmsg(db));
}

Statement prepare(sqlite3* db, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(db, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) !=
      SQLITE_OK) {
    fail(db, "cannot prepare a statement");
  }
  return {statement, sqlite3_finalize};
}

// Runs the statement one step: true for a row, false when it is done.
bool step(sqlite3* db, sqlite3_stmt* statement, const char* what) {
  const int status = sqlite3_step(statement);
  if (status != SQLITE_ROW && status != SQLITE_DONE) fail(db, what);
  return status == SQLITE_ROW;
}

void bind(sqlite3_stmt* statement, int index, std::string_view text) {
  sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void bind(sqlite3_stmt* statement, int index, std::size_t number) {
  sqlite3_bind_int64(statement, index, static_cast<sqlite3_int64>(number));
}

std::string column(sqlite3_stmt* statement, int index) {
  const auto* text = sqlite3_column_text(statement, index);
  return text ? std::string(reinterpret_cast<const char*>(text),
                            static_cast<std::size_t>(sqlite3_column_bytes(statement, index)))
              : std::string();
}

std::size_t size(sqlite3_stmt* statement, int index) {
  return static_cast<std::size_t>(sqlite3_column_int64(statement, index));
}

void execute(sqlite3* db, const std::string& sql) {
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail(db, sql);
}

// A write transaction that is rolled back unless committed, whatever fails
// in it: a statement, its preparation or the COMMIT itself.
class Transaction {
 public:
  explicit Transaction(sqlite3* db) : _db(db) { execute(db, "BEGIN IMMEDIATE"); }
  ~Transaction() {
    // A failed COMMIT may have ended the transaction already (an I/O error
    // does); a busy one leaves it open.
    if (!sqlite3_get_autocommit(_db)) sqlite3_exec(_db, "ROLLBACK", nullptr, nullptr, nullptr);
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void commit() { execute(_db, "COMMIT"); }

 private:
  sqlite3* _db;
};

// The columns every query reads, in this order.
constexpr std::string_view uploadColumns =
    "id, record_number, received_at, base64_size, deflate_size, json_size, verdict, accepted";

StoredUpload readUpload(sqlite3_stmt* statement) {
  StoredUpload upload;
  upload.id = sqlite3_column_int64(statement, 0);
  upload.recordNumber = column(statement, 1);
  upload.receivedAt = column(statement, 2);
  upload.decoded.base64Size = size(statement, 3);
  upload.decoded.deflateSize = size(statement, 4);
  upload.decoded.jsonSize = size(statement, 5);
  if (std::string verdict = column(statement, 6); verdict != validVerdict) {
    upload.decoded.problem = std::move(verdict);
  }
  upload.accepted = sqlite3_column_int(statement, 7) != 0;
  return upload;
}

}  // namespace

SandboxStore::SandboxStore(const std::string& path, const StoreLimits& limits, bool readOnly,
                           const std::atomic<bool>* stop)
    : _db(nullptr, sqlite3_close), _limits(limits), _stop(stop) {
  sqlite3* db = nullptr;
  const int flags = (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
                    SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_URI;
  const int status = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
  _db.reset(db);
  if (status != SQLITE_OK) fail(db, "cannot open " + path);
  sqlite3_busy_handler(db, waitForLock, this);
  if (readOnly) return;
  execute(db, schema);
  if (limits.maxSize != 0) {
    const auto query = prepare(db, "PRAGMA page_size");
    step(db, query.get(), "cannot read the page size");
    const auto pageSize = static_cast<std::uint64_t>(sqlite3_column_int64(query.get(), 0));
    const std::uint64_t pages = std::max<std::uint64_t>(limits.maxSize / pageSize, 1);
    execute(db, "PRAGMA max_page_count = " + std::to_string(pages));
  }
}

SandboxStore::~SandboxStore() = default;

int SandboxStore::waitForLock(void* store, int attempt) {
  const auto& self = *static_cast<const SandboxStore*>(store);
  constexpr auto nap = std::chrono::milliseconds(5);
  if ((self._stop != nullptr && *self._stop) || attempt * nap >= self._limits.busyTimeout) return 0;
  std::this_thread::sleep_for(nap);
  return 1;
}

bool SandboxStore::isTaken(std::string_view recordNumber) const {
  const std::lock_guard lock(_mutex);
  const auto statement =
      prepare(_db.get(), "SELECT 1 FROM uploads WHERE record_number = ? AND accepted");
  bind(statement.get(), 1, recordNumber);
  return step(_db.get(), statement.get(), "cannot look up the record number");
}

std::optional<std::int64_t> SandboxStore::record(std::string_view recordNumber,
                                                 std::string_view payload,
                                                 const DecodedPayload& decoded) {
  try {
    return insert(recordNumber, payload, decoded);
  } catch (const StoreError& error) {
    if (error.kind() != StoreError::Kind::full || _limits.maxSize == 0) throw;
    throw StoreError(StoreError::Kind::full, std::string(error.what()) + " (its limit is " +
                                                 std::to_string(_limits.maxSize) + " bytes)");
  }
}

std::optional<std::int64_t> SandboxStore::insert(std::string_view recordNumber,
                                                 std::string_view payload,
                                                 const DecodedPayload& decoded) {
  const std::lock_guard lock(_mutex);
  sqlite3* db = _db.get();
  Transaction transaction(db);
  const auto insert = prepare(db,
                              "INSERT INTO uploads (record_number, payload, base64_size, "
                              "deflate_size, json_size, verdict, accepted) "
                              "VALUES (?, ?, ?, ?, ?, ?, ?)");
  bind(insert.get(), 1, recordNumber);
  bind(insert.get(), 2, payload);
  bind(insert.get(), 3, decoded.base64Size);
  bind(insert.get(), 4, decoded.deflateSize);
  bind(insert.get(), 5, decoded.jsonSize);
  bind(insert.get(), 6, decoded.problem ? std::string_view(*decoded.problem) : validVerdict);
  sqlite3_bind_int(insert.get(), 7, decoded.valid() ? 1 : 0);
  // The unique index refuses a second accepted upload of a record number.
  const int inserted = sqlite3_step(insert.get());
  if (inserted == SQLITE_CONSTRAINT) return std::nullopt;
  if (inserted != SQLITE_DONE) fail(db, "cannot store the upload");
  const std::int64_t id = sqlite3_last_insert_rowid(db);
  const auto section = prepare(
      db, "INSERT INTO sections (upload_id, position, name, entries, note) VALUES (?, ?, ?, ?, ?)");
  for (std::size_t i = 0; i < decoded.sections.size(); ++i) {
    const auto& count = decoded.sections[i];
    sqlite3_reset(section.get());
    sqlite3_bind_int64(section.get(), 1, id);
    bind(section.get(), 2, i + 1);
    bind(section.get(), 3, std::string_view(count.name));
    bind(section.get(), 4, count.entries);
    bind(section.get(), 5, std::string_view(count.note));
    step(db, section.get(), "cannot store the section counts");
  }
  transaction.commit();
  return id;
}

std::optional<StoredUpload> SandboxStore::find(std::string_view recordNumber) const {
  const std::lock_guard lock(_mutex);
  const auto query = prepare(_db.get(), "SELECT " + std::string(uploadColumns) +
                                            ", payload FROM uploads WHERE record_number = ? "
                                            "ORDER BY accepted DESC, id DESC LIMIT 1");
  bind(query.get(), 1, recordNumber);
  return readWhole(query.get());
}

std::optional<StoredUpload> SandboxStore::upload(std::int64_t id) const {
  const std::lock_guard lock(_mutex);
  const auto query = prepare(
      _db.get(), "SELECT " + std::string(uploadColumns) + ", payload FROM uploads WHERE id = ?");
  sqlite3_bind_int64(query.get(), 1, id);
  return readWhole(query.get());
}

std::optional<StoredUpload> SandboxStore::readWhole(sqlite3_stmt* query) const {
  sqlite3* db = _db.get();
  if (!step(db, query, "cannot read the upload")) return std::nullopt;
  StoredUpload upload = readUpload(query);
  upload.payload = column(query, 8);
  const auto sections =
      prepare(db, "SELECT name, entries, note FROM sections WHERE upload_id = ? ORDER BY position");
  sqlite3_bind_int64(sections.get(), 1, upload.id);
  while (step(db, sections.get(), "cannot read the section counts")) {
    upload.decoded.sections.push_back(
        {column(sections.get(), 0), size(sections.get(), 1), column(sections.get(), 2)});
  }
  return upload;
}

std::vector<StoredUpload> SandboxStore::list() const {
  const std::lock_guard lock(_mutex);
  const auto query =
      prepare(_db.get(), "SELECT " + std::string(uploadColumns) + " FROM uploads ORDER BY id");
  std::vector<StoredUpload> uploads;
  while (step(_db.get(), query.get(), "cannot list the uploads")) {
    uploads.push_back(readUpload(query.get()));
  }
  return uploads;
}

}  // namespace tavrin::sandbox
