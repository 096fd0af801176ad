#pragma once

#include <sqlite3.h>
#include <unistd.h>

#include <map>

namespace kelpin::test {

// Lets the Nth change to a database's files go wrong: SQLite's own access to files with a count in
// front. For a process of its own, of one thread.
class FaultyDisk {
 public:
  enum class Fault { kKilled, kFails };

  // From now on this is how SQLite gets at files. `call` 1 is the next change; 0 is none.
  static void Install(int call, Fault fault) {
    left_ = call;
    fault_ = fault;
    original_ = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs vfs;
    vfs = *original_;
    vfs.zName = "faulty";
    vfs.xOpen = Open;
    vfs.xDelete = Delete;
    sqlite3_vfs_register(&vfs, 1);
  }

  // Whether the planned call came.
  static bool Failed() { return failed_; }

 private:
  static bool Fails() {
    if (left_ == 0 || --left_ != 0) return false;
    failed_ = true;
    return true;
  }

  static int Open(sqlite3_vfs* /*vfs*/, sqlite3_filename name, sqlite3_file* file, int flags,
                  int* outFlags) {
    const int result = original_->xOpen(original_, name, file, flags, outFlags);
    if (result == SQLITE_OK) {
      // There are a few tables of methods, one for each way to lock.
      auto [entry, isNew] = tables_.try_emplace(file->pMethods);
      if (isNew) {
        entry->second = *file->pMethods;
        entry->second.xWrite = Write;
        entry->second.xTruncate = Truncate;
        entry->second.xSync = Sync;
        originals_[&entry->second] = file->pMethods;
      }
      file->pMethods = &entry->second;
    }
    return result;
  }

  static int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
    const sqlite3_io_methods* const methods = originals_[file->pMethods];
    if (!Fails()) return methods->xWrite(file, data, size, offset);
    // Half of it is there.
    static_cast<void>(methods->xWrite(file, data, size / 2, offset));
    if (fault_ == Fault::kKilled) _exit(0);
    return SQLITE_FULL;
  }

  static int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    if (!Fails()) return originals_[file->pMethods]->xTruncate(file, size);
    if (fault_ == Fault::kKilled) _exit(0);
    return SQLITE_IOERR_TRUNCATE;
  }

  static int Sync(sqlite3_file* file, int flags) {
    if (!Fails()) return originals_[file->pMethods]->xSync(file, flags);
    if (fault_ == Fault::kKilled) _exit(0);
    return SQLITE_IOERR_FSYNC;
  }

  static int Delete(sqlite3_vfs* /*vfs*/, const char* name, int syncFolder) {
    if (!Fails()) return original_->xDelete(original_, name, syncFolder);
    if (fault_ == Fault::kKilled) _exit(0);
    return SQLITE_IOERR_DELETE;
  }

  static inline int left_ = 0;
  static inline Fault fault_ = Fault::kFails;
  static inline bool failed_ = false;
  static inline sqlite3_vfs* original_ = nullptr;
  static inline std::map<const sqlite3_io_methods*, sqlite3_io_methods> tables_;
  static inline std::map<const sqlite3_io_methods*, const sqlite3_io_methods*> originals_;
};

}  // namespace kelpin::test
