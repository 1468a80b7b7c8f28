// The store under faults injected into real SQLite: whatever fails in the
// middle of an upload, that upload is rolled back with a typed error, the
// next one is stored, and no accepted upload is lost.
#include "SandboxStore.hpp"
#include "TemporaryDirectory.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <functional>

namespace tavrin::sandbox {
namespace {

// The system's VFS, except that every write fails with an I/O error while
// `failing` is set. A store opens it as file:PATH?vfs=failing-writes.
struct FailingWrites {
  static inline std::atomic<bool> failing{false};
  struct File {
    sqlite3_file base;
    sqlite3_file* inner;  // the system's file, which follows this one in memory
  };
  static sqlite3_file* inner(sqlite3_file* file) { return reinterpret_cast<File*>(file)->inner; }
  template <auto Method>
  struct Forward;
  template <typename... Args, int (*sqlite3_io_methods::*Method)(sqlite3_file*, Args...)>
  struct Forward<Method> {
    static int call(sqlite3_file* file, Args... args) {
      return (inner(file)->pMethods->*Method)(inner(file), args...);
    }
  };
  static int write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
    return failing ? SQLITE_IOERR_WRITE
                   : Forward<&sqlite3_io_methods::xWrite>::call(file, data, size, offset);
  }
  static inline const sqlite3_io_methods methods = {
      1,
      Forward<&sqlite3_io_methods::xClose>::call,
      Forward<&sqlite3_io_methods::xRead>::call,
      write,
      Forward<&sqlite3_io_methods::xTruncate>::call,
      Forward<&sqlite3_io_methods::xSync>::call,
      Forward<&sqlite3_io_methods::xFileSize>::call,
      Forward<&sqlite3_io_methods::xLock>::call,
      Forward<&sqlite3_io_methods::xUnlock>::call,
      Forward<&sqlite3_io_methods::xCheckReservedLock>::call,
      Forward<&sqlite3_io_methods::xFileControl>::call,
      Forward<&sqlite3_io_methods::xSectorSize>::call,
      Forward<&sqlite3_io_methods::xDeviceCharacteristics>::call,
      nullptr,  // version 1: no shared memory and no memory mapping
      nullptr,
      nullptr,
      nullptr,
      nullptr,
      nullptr};
  static inline sqlite3_vfs vfs;

  static void install() {
    if (sqlite3_vfs_find("failing-writes") != nullptr) return;
    vfs = *sqlite3_vfs_find(nullptr);
    vfs.zName = "failing-writes";
    vfs.szOsFile += static_cast<int>(sizeof(File));
    vfs.xOpen = [](sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* out) {
      auto* wrapper = reinterpret_cast<File*>(file);
      wrapper->inner = reinterpret_cast<sqlite3_file*>(wrapper + 1);
      sqlite3_vfs* system = sqlite3_vfs_find(nullptr);
      const int status = system->xOpen(system, name, wrapper->inner, flags, out);
      wrapper->base.pMethods = status == SQLITE_OK ? &methods : nullptr;
      return status;
    };
    sqlite3_vfs_register(&vfs, 0);
  }
};

// A second connection to the database, as `tavrin inspect` or an operator has.
struct OtherConnection {
  explicit OtherConnection(const std::string& path) { sqlite3_open(path.c_str(), &db); }
  ~OtherConnection() {
    sqlite3_finalize(reading);
    sqlite3_close(db);
  }
  std::string run(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
    std::string first;
    if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0) != nullptr) {
      first = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    }
    sqlite3_finalize(statement);
    return first;
  }
  sqlite3* db = nullptr;
  sqlite3_stmt* reading = nullptr;  // a read in progress holds its lock
};

TEST(SandboxStore, RollsBackAFailedUploadAndKeepsEveryAcceptedOne) {
  FailingWrites::install();
  const struct {
    const char* name;
    std::function<void(OtherConnection&)> fault, repair;
    std::size_t payloadSize;
    StoreError::Kind kind;
  } faults[] = {
      {"a reader holds the database past COMMIT's busy timeout",
       [](OtherConnection& other) {
         other.run("BEGIN");
         sqlite3_prepare_v2(other.db, "SELECT id FROM uploads", -1, &other.reading, nullptr);
         sqlite3_step(other.reading);
       },
       [](OtherConnection& other) {
         sqlite3_finalize(std::exchange(other.reading, nullptr));
         other.run("COMMIT");
       },
       10, StoreError::Kind::busy},
      {"a statement cannot be prepared",
       [](OtherConnection& other) { other.run("ALTER TABLE sections RENAME TO away"); },
       [](OtherConnection& other) { other.run("ALTER TABLE away RENAME TO sections"); }, 10,
       StoreError::Kind::failed},
      {"the upload would pass the size limit", [](OtherConnection&) {}, [](OtherConnection&) {},
       200000, StoreError::Kind::full},
      {"writes fail with an I/O error", [](OtherConnection&) { FailingWrites::failing = true; },
       [](OtherConnection&) { FailingWrites::failing = false; }, 10, StoreError::Kind::failed},
  };
  DecodedPayload valid;
  valid.sections = {{"GeneralInfo", 9, ""}};
  for (const auto& fault : faults) {
    SCOPED_TRACE(fault.name);
    const testing_support::TemporaryDirectory directory;
    const std::string path = (directory / "uploads.db").string();
    SandboxStore store("file:" + path + "?vfs=failing-writes",
                       {std::chrono::milliseconds(50), 100000});
    OtherConnection other(path);
    ASSERT_TRUE(store.record("kept", "AAAA", valid));

    fault.fault(other);
    try {
      store.record("failed", std::string(fault.payloadSize, 'A'), valid);
      ADD_FAILURE() << "the upload was stored";
    } catch (const StoreError& error) {
      EXPECT_EQ(error.kind(), fault.kind) << error.what();
    }
    fault.repair(other);

    EXPECT_TRUE(store.record("later", "AAAA", valid));
    EXPECT_TRUE(store.isTaken("kept"));
    EXPECT_TRUE(store.isTaken("later"));
    EXPECT_FALSE(store.find("failed"));
    EXPECT_EQ(store.find("kept")->decoded.sections.size(), 1u);
    EXPECT_EQ(other.run("PRAGMA integrity_check"), "ok");
  }
}

}  // namespace
}  // namespace tavrin::sandbox
