#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Check.h"
#include "db/dao/sqlite/CopyBack.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/sqlite/MissingRows.h"
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
  std::string type;
};

// In the order in which they were made.
std::vector<Declaration> ReadableDeclarations(Connection& damaged) {
  std::vector<Declaration> declarations;
  Statement schema(
      damaged,
      "SELECT name, sql, type FROM sqlite_schema WHERE type IN ('table', 'index', 'trigger') AND "
      "sql LIKE 'CREATE %' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
  try {
    while (schema.Step())
      declarations.push_back(
          {std::string(schema.Text(0)), std::string(schema.Text(1)), std::string(schema.Text(2))});
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
  }
  return declarations;
}

void OpenDamaged(Connection& damaged) {
  try {
    damaged.Open({.exclusive = true, .readOnly = false});
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
    throw EngineError(
        ErrorNumber::kUnrecognisedFormat,
        FileText("The file ", damaged.Path(), " is damaged so badly that nothing in it can be read."));
  }
}

void Declare(Connection& mended, const std::vector<Declaration>& declarations, std::string_view type) {
  for (const Declaration& each : declarations)
    if (each.type == type) Statement(mended, each.sql).Run();
}

RepairReport::Table ReportOf(Connection& mended, const std::string& name) {
  Statement count(mended, "SELECT count(*) FROM " + QuoteIdentifier(name));
  ResetAtEnd reset(count);
  const std::int64_t read = count.Step() ? count.Number(0) : 0;
  return {.name = name, .read = read, .missing = UnusedIds(mended, name)};
}

// Indexes and triggers come last: rows are taken as they were, whatever a trigger makes of changes.
void CopyReadable(Connection& damaged, Connection& mended, RepairReport& report,
                  const MaintenanceProgress& progress) {
  const std::vector<Declaration> declarations = ReadableDeclarations(damaged);
  const auto tables = std::count_if(declarations.begin(), declarations.end(),
                                    [](const auto& d) { return d.type == "table"; });
  if (tables == 0)
    throw EngineError(ErrorNumber::kUnrecognisedFormat,
                      FileText("No table can be read in the damaged file ", damaged.Path(), "."));
  mended.SetCache(true);
  mended.BeginWriting();
  Declare(mended, declarations, "table");
  double done = 0;
  for (const Declaration& each : declarations) {
    if (each.type != "table") continue;
    SalvageTable(damaged, mended, each.name, [&](double part) {
      return !progress || progress(0.8 * (done + part) / static_cast<double>(tables));
    });
    report.tables.push_back(ReportOf(mended, each.name));
    done += 1;
  }
  Declare(mended, declarations, "index");
  Declare(mended, declarations, "trigger");
  mended.Commit();
}

void PutBack(Connection& mended, Connection& damaged, RepairReport& report,
             const MaintenanceProgress& progress) {
  const fs::path kept = KeepCopy(damaged, ".damaged");
  try {
    CopyBack(mended, damaged, [&](double part) { return !progress || progress(0.8 + 0.2 * part); });
  } catch (const std::exception&) {
    static_cast<void>(platform::RemoveFile(kept));
    throw;
  }
  report.damagedFile = platform::FromPath(kept);
}

}  // namespace

RepairReport RepairFile(const std::string& path, const MaintenanceProgress& progress,
                        const FinishRepair& finish, const std::shared_ptr<EngineState>& state) {
  RepairReport report;
  Connection damaged(path, state);
  OpenDamaged(damaged);
  // What a repair that was cut off has left goes, whether or not there is anything to mend this time.
  platform::SweepUnfinished(FilePath(path));
  report.findings = CheckStructure(damaged);
  if (report.WasDamaged()) {
    std::error_code error;
    const platform::NewFile work(FilePath(path), error, FilePath(path));
    if (error) ThrowFileError(error, path);
    const auto mended = FileStorage::CreateIn(platform::FromPath(work.path()), state);
    CopyReadable(damaged, mended->File(), report, progress);
    Database content(mended);
    if (finish) finish(content, report);
    if (!CheckStructure(mended->File()).empty())
      throw EngineError(ErrorNumber::kDamaged, FileText("The file ", path, " could not be mended."));
    PutBack(mended->File(), damaged, report, progress);
    mended->Close();
  }
  if (progress) progress(1.0);
  return report;
}

}  // namespace varnlog::dao
