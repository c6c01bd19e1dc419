#include <algorithm>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Check.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/TableSalvage.h"
#include "platform/SafeFile.h"

namespace varnlog::dao {

namespace {

namespace fs = std::filesystem;

// The file itself, where the path only points to it.
fs::path FilePath(const std::string& path) {
  std::error_code error;
  const fs::path named = platform::ToPath(StoragePath(path));
  const fs::path resolved = fs::weakly_canonical(named, error);
  return error ? named : resolved;
}

struct Declaration {
  std::string name;
  std::string sql;
  bool isTable = false;
};

// Only what makes tables and indexes is taken over from a file that cannot be trusted.
std::vector<Declaration> ReadableDeclarations(Connection& damaged) {
  std::vector<Declaration> declarations;
  Statement schema(
      damaged,
      "SELECT name, sql, type FROM sqlite_schema WHERE type IN ('table', 'index') AND sql LIKE 'CREATE %' "
      "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
  try {
    while (schema.Step())
      declarations.push_back(
          {std::string(schema.Text(0)), std::string(schema.Text(1)), schema.Text(2) == "table"});
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
  }
  return declarations;
}

std::shared_ptr<Connection> OpenDamaged(const std::string& path, const std::shared_ptr<EngineState>& state) {
  try {
    return Connection::Open(path, {.exclusive = true, .readOnly = false}, state);
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
    throw EngineError(ErrorNumber::kUnrecognisedFormat,
                      FileText("The file ", path, " is damaged so badly that nothing in it can be read."));
  }
}

void Declare(Connection& mended, const std::vector<Declaration>& declarations, bool tables) {
  for (const Declaration& each : declarations)
    if (each.isTable == tables) Statement(mended, each.sql).Run();
}

void CopyReadable(Connection& damaged, Connection& mended, const MaintenanceProgress& progress) {
  const std::vector<Declaration> declarations = ReadableDeclarations(damaged);
  const auto tables =
      std::count_if(declarations.begin(), declarations.end(), [](const auto& d) { return d.isTable; });
  if (tables == 0)
    throw EngineError(ErrorNumber::kUnrecognisedFormat,
                      FileText("No table can be read in the damaged file ", damaged.Path(), "."));
  mended.BeginWork();
  Declare(mended, declarations, true);
  double done = 0;
  for (const Declaration& each : declarations) {
    if (!each.isTable) continue;
    SalvageTable(damaged, mended, each.name, [&](double part) {
      return !progress || progress(0.9 * (done + part) / static_cast<double>(tables));
    });
    done += 1;
  }
  Declare(mended, declarations, false);
  mended.CommitWork();
}

// The damaged file keeps its place until the rename, which puts the mended one there in one step.
void SwapIn(const std::string& mended, const std::string& path) {
  std::error_code error;
  const auto kept = platform::KeepAside(FilePath(path), ".damaged", platform::Keep::kSecondName, error);
  if (!kept) ThrowFileError(error, path);
  try {
    ReplaceDatabaseFile(mended, path);
  } catch (const EngineError&) {
    static_cast<void>(platform::RemoveFile(*kept));
    throw;
  }
}

}  // namespace

void RepairFile(const std::string& path, const MaintenanceProgress& progress,
                const std::shared_ptr<EngineState>& state) {
  const auto damaged = OpenDamaged(path, state);
  if (CheckStructure(*damaged).empty()) {
    if (progress) progress(1.0);
    return;
  }
  const std::string unfinished = path + ".repair";
  RemoveDatabaseFile(unfinished);
  try {
    const auto mended = Connection::Create(unfinished, state);
    CopyReadable(*damaged, *mended, progress);
    if (!CheckStructure(*mended).empty())
      throw EngineError(ErrorNumber::kDamaged, FileText("The file ", path, " could not be mended."));
    mended->Close();
    SwapIn(unfinished, path);
  } catch (const EngineError&) {
    RemoveDatabaseFile(unfinished);
    throw;
  }
  if (progress) progress(1.0);
}

}  // namespace varnlog::dao
