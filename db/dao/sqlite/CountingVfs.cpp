#include "db/dao/sqlite/CountingVfs.h"

#include <exception>

#include <sqlite3.h>

#include "platform/SafeFile.h"

namespace varnlog::dao {

namespace {

FileCounters counters;

// The system's own file object follows this one in the memory that the storage provides.
struct CountedFile {
  sqlite3_file base;
  int lockLevel;
  bool isDatabase;
  const char* unflushedJournal;  // its path, until its name is on the disk
};

sqlite3_vfs* SystemVfs(sqlite3_vfs* vfs) {
  return static_cast<sqlite3_vfs*>(vfs->pAppData);
}
sqlite3_file* Inner(sqlite3_file* file) {
  return reinterpret_cast<sqlite3_file*>(reinterpret_cast<char*>(file) + sizeof(CountedFile));
}
const sqlite3_io_methods& InnerMethods(sqlite3_file* file) {
  return *Inner(file)->pMethods;
}

int Close(sqlite3_file* file) {
  return InnerMethods(file).xClose(Inner(file));
}

int Read(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
  ++counters.reads;
  return InnerMethods(file).xRead(Inner(file), buffer, amount, offset);
}

int Write(sqlite3_file* file, const void* buffer, int amount, sqlite3_int64 offset) {
  ++counters.writes;
  return InnerMethods(file).xWrite(Inner(file), buffer, amount, offset);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  return InnerMethods(file).xTruncate(Inner(file), size);
}

// The system's own file flushes the folder of a new journal as well, but takes a failure for none: the power
// goes, the journal is not there, and what was overwritten is lost.
int FlushFolderOf(const char* journal) noexcept {
  try {
    return platform::FlushFolder(platform::ToPath(journal).parent_path()) ? SQLITE_IOERR_DIR_FSYNC
                                                                          : SQLITE_OK;
  } catch (const std::exception&) {
    return SQLITE_NOMEM;
  }
}

int Sync(sqlite3_file* file, int flags) {
  const char*& journal = reinterpret_cast<CountedFile*>(file)->unflushedJournal;
  if (journal != nullptr) {
    const int flushed = FlushFolderOf(journal);
    if (flushed != SQLITE_OK) return flushed;
    journal = nullptr;
  }
  return InnerMethods(file).xSync(Inner(file), flags);
}
int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  return InnerMethods(file).xFileSize(Inner(file), size);
}

// Journals are found by name. Through a file that no longer has its name another file's journal would be
// taken for its own: rolled back, or removed while that file is being changed.
bool HasMoved(sqlite3_file* file) {
  int moved = 0;
  const int result = InnerMethods(file).xFileControl(Inner(file), SQLITE_FCNTL_HAS_MOVED, &moved);
  return result == SQLITE_OK && moved != 0;
}

int Lock(sqlite3_file* file, int level) {
  auto& counted = *reinterpret_cast<CountedFile*>(file);
  const bool isFirst = counted.isDatabase && counted.lockLevel == SQLITE_LOCK_NONE;
  const int result = InnerMethods(file).xLock(Inner(file), level);
  if (result == SQLITE_OK && isFirst && HasMoved(file)) {
    InnerMethods(file).xUnlock(Inner(file), SQLITE_LOCK_NONE);
    return SQLITE_READONLY_DBMOVED;
  }
  if (result == SQLITE_OK && level > counted.lockLevel) {
    ++counters.locksPlaced;
    counted.lockLevel = level;
  }
  return result;
}

int Unlock(sqlite3_file* file, int level) {
  auto& counted = *reinterpret_cast<CountedFile*>(file);
  if (level < counted.lockLevel) {
    ++counters.locksReleased;
    counted.lockLevel = level;
  }
  return InnerMethods(file).xUnlock(Inner(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* result) {
  return InnerMethods(file).xCheckReservedLock(Inner(file), result);
}
int FileControl(sqlite3_file* file, int operation, void* argument) {
  return InnerMethods(file).xFileControl(Inner(file), operation, argument);
}
int SectorSize(sqlite3_file* file) {
  return InnerMethods(file).xSectorSize(Inner(file));
}
int DeviceCharacteristics(sqlite3_file* file) {
  return InnerMethods(file).xDeviceCharacteristics(Inner(file));
}

// Version 1: no shared memory, so that no file can be used in a journal mode that fails on network shares.
constexpr sqlite3_io_methods kMethods = {.iVersion = 1,
                                         .xClose = Close,
                                         .xRead = Read,
                                         .xWrite = Write,
                                         .xTruncate = Truncate,
                                         .xSync = Sync,
                                         .xFileSize = FileSize,
                                         .xLock = Lock,
                                         .xUnlock = Unlock,
                                         .xCheckReservedLock = CheckReservedLock,
                                         .xFileControl = FileControl,
                                         .xSectorSize = SectorSize,
                                         .xDeviceCharacteristics = DeviceCharacteristics,
                                         .xShmMap = nullptr,
                                         .xShmLock = nullptr,
                                         .xShmBarrier = nullptr,
                                         .xShmUnmap = nullptr,
                                         .xFetch = nullptr,
                                         .xUnfetch = nullptr};

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  sqlite3_vfs* const system = SystemVfs(vfs);
  file->pMethods = nullptr;
  const int result = system->xOpen(system, name, Inner(file), flags, outFlags);
  if (Inner(file)->pMethods != nullptr) file->pMethods = &kMethods;
  auto& counted = *reinterpret_cast<CountedFile*>(file);
  counted.lockLevel = SQLITE_LOCK_NONE;
  counted.isDatabase = (flags & SQLITE_OPEN_MAIN_DB) != 0;
  counted.unflushedJournal = (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0 ? name : nullptr;
  return result;
}

int Delete(sqlite3_vfs* vfs, const char* name, int syncFolder) {
  return SystemVfs(vfs)->xDelete(SystemVfs(vfs), name, syncFolder);
}
int Access(sqlite3_vfs* vfs, const char* name, int flags, int* result) {
  return SystemVfs(vfs)->xAccess(SystemVfs(vfs), name, flags, result);
}
int FullPathname(sqlite3_vfs* vfs, const char* name, int size, char* out) {
  return SystemVfs(vfs)->xFullPathname(SystemVfs(vfs), name, size, out);
}
int Randomness(sqlite3_vfs* vfs, int size, char* out) {
  return SystemVfs(vfs)->xRandomness(SystemVfs(vfs), size, out);
}
int Sleep(sqlite3_vfs* vfs, int microseconds) {
  return SystemVfs(vfs)->xSleep(SystemVfs(vfs), microseconds);
}
int CurrentTime(sqlite3_vfs* vfs, double* now) {
  return SystemVfs(vfs)->xCurrentTime(SystemVfs(vfs), now);
}
int LastError(sqlite3_vfs* vfs, int size, char* out) {
  return SystemVfs(vfs)->xGetLastError(SystemVfs(vfs), size, out);
}
int CurrentTime64(sqlite3_vfs* vfs, sqlite3_int64* now) {
  return SystemVfs(vfs)->xCurrentTimeInt64(SystemVfs(vfs), now);
}

sqlite3_vfs MakeVfs(sqlite3_vfs& system) {
  sqlite3_vfs vfs{};
  vfs.iVersion = 2;
  vfs.szOsFile = static_cast<int>(sizeof(CountedFile)) + system.szOsFile;
  vfs.mxPathname = system.mxPathname;
  vfs.zName = "varnlog";
  vfs.pAppData = &system;
  vfs.xOpen = Open;
  vfs.xDelete = Delete;
  vfs.xAccess = Access;
  vfs.xFullPathname = FullPathname;
  vfs.xRandomness = Randomness;
  vfs.xSleep = Sleep;
  vfs.xCurrentTime = CurrentTime;
  vfs.xGetLastError = LastError;
  vfs.xCurrentTimeInt64 = CurrentTime64;
  return vfs;
}

}  // namespace

const FileCounters& CountedFileUse() {
  return counters;
}

const char* CountingVfsName() {
  static sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  if (system == nullptr) return nullptr;
  static sqlite3_vfs vfs = MakeVfs(*system);
  static const int registered = sqlite3_vfs_register(&vfs, 0);
  return registered == SQLITE_OK ? vfs.zName : nullptr;
}

}  // namespace varnlog::dao
