#include <algorithm>

#include <sqlite3.h>

#include "tests/db/dao/EngineFixture.h"

namespace varnlog::dao {

namespace {

// The file calls of the storage that matter to a journal's end, in their order.
std::vector<std::string> calls;
int (*systemUnlink)(const char*) = nullptr;
int (*systemOpenFolder)(const char*, int*) = nullptr;

int NotedUnlink(const char* path) {
  calls.emplace_back("unlink");
  return systemUnlink(path);
}
int NotedOpenFolder(const char* path, int* descriptor) {
  calls.emplace_back("flush folder");
  return systemOpenFolder(path, descriptor);
}

class FileCallsTest : public EngineTest {};

// Otherwise the journal is back after a power cut, and the change that was acknowledged is undone.
TEST_F(FileCallsTest, TheEndOfAJournalReachesTheDisk) {
  const auto log = Open(MakeLog());
  sqlite3_vfs* const vfs = sqlite3_vfs_find("unix");
  systemUnlink = reinterpret_cast<int (*)(const char*)>(vfs->xGetSystemCall(vfs, "unlink"));
  systemOpenFolder = reinterpret_cast<int (*)(const char*, int*)>(vfs->xGetSystemCall(vfs, "openDirectory"));
  vfs->xSetSystemCall(vfs, "unlink", reinterpret_cast<sqlite3_syscall_ptr>(&NotedUnlink));
  vfs->xSetSystemCall(vfs, "openDirectory", reinterpret_cast<sqlite3_syscall_ptr>(&NotedOpenFolder));
  FillLog(*workspace_, *log, 1);
  const auto inTransaction = std::exchange(calls, {});
  AddExposure(*log->OpenRecordset("TXray"), {"Alone", "A", Minute(0), Minute(1)});
  vfs->xSetSystemCall(vfs, "unlink", nullptr);
  vfs->xSetSystemCall(vfs, "openDirectory", nullptr);
  for (const auto& each : {inTransaction, calls}) {
    ASSERT_FALSE(each.empty());
    EXPECT_TRUE(std::count(each.begin(), each.end(), "unlink") == 1 && each.back() == "flush folder");
  }
}

}  // namespace

}  // namespace varnlog::dao
