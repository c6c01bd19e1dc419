#include "db/dao/DBEngine.h"
#include "tests/Paths.h"
#include "tests/support/TestFolder.h"

namespace {

void ReadAll(varnlog::dao::Database& log) {
  for (const std::string& table : log.TableNames()) {
    const auto rows = log.OpenRecordset(table, varnlog::dao::RecordsetType::kTable);
    for (; !rows->IsEOF(); rows->MoveNext()) {
      for (std::size_t i = 0; i < rows->FieldCount(); ++i) static_cast<void>(rows->Fields(i).Text());
    }
  }
  static_cast<void>(log.Check());
}

}  // namespace

/// Any file as a log: refused or read, and mended or not.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace varnlog;
  const test::TestFolder folder;
  const std::string path = folder.Holding("log.mdb", {reinterpret_cast<const char*>(data), size}).string();
  dao::DBEngine engine;
  engine.SetSystemDB(VARNLOG_PROGRAM_DIR "/system.mdw");
  const auto workspace = engine.CreateWorkspace("Fuzz", "Admin", "");
  const auto tries = [](const auto& operation) {
    try {
      operation();
    } catch (const dao::EngineError&) {
      return;  // refused, with a reason
    }
  };
  tries([&] { ReadAll(*workspace->OpenDatabase(path, false, true)); });
  tries([&] { engine.RepairDatabase(path); });
  tries([&] { ReadAll(*workspace->OpenDatabase(path, false, false)); });
  return 0;
}
