#include "SandboxStore.hpp"

#include <sqlite3.h>

#include <stdexcept>

namespace tavrin::sandbox {

namespace {

constexpr const char* schema = R"sql(
CREATE TABLE IF NOT EXISTS uploads (
  id INTEGER PRIMARY KEY,
  record_number TEXT NOT NULL,
  received_at TEXT NOT NULL DEFAULT (strftime('%Y-%m-%dT%H:%M:%fZ', 'now')),
  payload TEXT NOT NULL,
  dataset TEXT,
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
  throw std::runtime_error(what + ": " + sqlite3_errmsg(db));
}

Statement prepare(sqlite3* db, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(db, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) !=
      SQLITE_OK) {
    fail(db, "sandbox database");
  }
  return {statement, sqlite3_finalize};
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

void execute(sqlite3* db, const char* sql) {
  if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(db, sql);
}

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

SandboxStore::SandboxStore(const std::string& path, bool readOnly) : _db(nullptr, sqlite3_close) {
  sqlite3* db = nullptr;
  const int flags = (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
                    SQLITE_OPEN_FULLMUTEX;
  const int status = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
  _db.reset(db);
  if (status != SQLITE_OK) fail(db, "cannot open " + path);
  // The tool may read a database file while a running sandbox writes it.
  sqlite3_busy_timeout(db, 5000);
  if (!readOnly) execute(db, schema);
}

SandboxStore::~SandboxStore() = default;

bool SandboxStore::isTaken(std::string_view recordNumber) const {
  const std::lock_guard lock(_mutex);
  const auto statement =
      prepare(_db.get(), "SELECT 1 FROM uploads WHERE record_number = ? AND accepted");
  bind(statement.get(), 1, recordNumber);
  return sqlite3_step(statement.get()) == SQLITE_ROW;
}

std::optional<std::int64_t> SandboxStore::record(std::string_view recordNumber,
                                                 std::string_view payload,
                                                 const DecodedPayload& decoded) {
  const std::lock_guard lock(_mutex);
  sqlite3* db = _db.get();
  execute(db, "BEGIN");
  const auto insert = prepare(db,
                              "INSERT INTO uploads (record_number, payload, dataset, base64_size, "
                              "deflate_size, json_size, verdict, accepted) "
                              "VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
  bind(insert.get(), 1, recordNumber);
  bind(insert.get(), 2, payload);
  if (decoded.jsonSize != 0) bind(insert.get(), 3, std::string_view(decoded.json));
  bind(insert.get(), 4, decoded.base64Size);
  bind(insert.get(), 5, decoded.deflateSize);
  bind(insert.get(), 6, decoded.jsonSize);
  bind(insert.get(), 7, decoded.problem ? std::string_view(*decoded.problem) : validVerdict);
  sqlite3_bind_int(insert.get(), 8, decoded.valid() ? 1 : 0);
  const int status = sqlite3_step(insert.get());
  if (status == SQLITE_CONSTRAINT) {
    execute(db, "ROLLBACK");
    return std::nullopt;
  }
  if (status != SQLITE_DONE) {
    execute(db, "ROLLBACK");
    fail(db, "cannot store the upload");
  }
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
    if (sqlite3_step(section.get()) != SQLITE_DONE) {
      execute(db, "ROLLBACK");
      fail(db, "cannot store the section counts");
    }
  }
  execute(db, "COMMIT");
  return id;
}

std::optional<StoredUpload> SandboxStore::find(std::string_view recordNumber) const {
  const std::lock_guard lock(_mutex);
  sqlite3* db = _db.get();
  const auto query = prepare(db, "SELECT " + std::string(uploadColumns) +
                                     ", payload, dataset FROM uploads WHERE record_number = ? "
                                     "ORDER BY accepted DESC, id DESC LIMIT 1");
  bind(query.get(), 1, recordNumber);
  if (sqlite3_step(query.get()) != SQLITE_ROW) return std::nullopt;
  StoredUpload upload = readUpload(query.get());
  upload.payload = column(query.get(), 8);
  upload.decoded.json = column(query.get(), 9);
  const auto sections =
      prepare(db, "SELECT name, entries, note FROM sections WHERE upload_id = ? ORDER BY position");
  sqlite3_bind_int64(sections.get(), 1, upload.id);
  while (sqlite3_step(sections.get()) == SQLITE_ROW) {
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
  while (sqlite3_step(query.get()) == SQLITE_ROW) uploads.push_back(readUpload(query.get()));
  return uploads;
}

}  // namespace tavrin::sandbox
