#include "legacy/LoadTables.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "db/dao/BulkRows.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Schema.h"
#include "legacy/JetDatabase.h"
#include "legacy/OldFile.h"
#include "platform/Files.h"

namespace varnlog::legacy {
namespace {

using dao::EngineError;
using dao::ErrorNumber;
using dao::FieldType;

std::optional<FieldType> FieldTypeOf(ColumnType type) {
  switch (type) {
    case ColumnType::kBoolean:
      return FieldType::kBoolean;
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
      return FieldType::kLong;
    case ColumnType::kSingle:
    case ColumnType::kDouble:
      return FieldType::kDouble;
    case ColumnType::kDate:
      return FieldType::kDate;
    case ColumnType::kText:
      return FieldType::kText;
    case ColumnType::kMoney:
    case ColumnType::kGuid:
    case ColumnType::kMemo:
      return FieldType::kMemo;
    default:
      return std::nullopt;
  }
}

std::string Declaration(const JetColumn& column, FieldType type, bool isKey) {
  if (isKey) return dao::QuoteIdentifier(column.name) + " INTEGER PRIMARY KEY AUTOINCREMENT";
  dao::FieldDef field;
  field.name = column.name;
  field.type = type;
  field.size = type == FieldType::kText ? column.size : 0;
  return dao::QuoteIdentifier(column.name) + " " + dao::DeclaredType(field);
}

// Makes the table; the result is the columns that it has.
std::vector<int> MakeTable(const JetTable& table, dao::Database& target) {
  std::vector<int> columns;
  std::string fields;
  bool hasKey = false;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const JetColumn& column = table.columns[i];
    const auto type = FieldTypeOf(column.type);
    if (!type) continue;
    const bool isKey = column.isCounter && !hasKey;
    hasKey = hasKey || isKey;
    fields += (fields.empty() ? "" : ", ") + Declaration(column, *type, isKey);
    columns.push_back(static_cast<int>(i));
  }
  if (!columns.empty())
    target.Execute("CREATE TABLE " + dao::QuoteIdentifier(table.name) + " (" + fields + ")");
  return columns;
}

// The names of the columns that a loaded table's index has; "" when one of them was left out.
std::string IndexColumns(const JetTable& table, const JetIndex& index) {
  std::string names;
  for (const int column : index.columns) {
    const JetColumn& each = table.columns[static_cast<std::size_t>(column)];
    if (!FieldTypeOf(each.type)) return {};
    names += (names.empty() ? "" : ", ") + dao::QuoteIdentifier(each.name);
  }
  return names;
}

bool IsCounterKey(const JetTable& table, const JetIndex& index) {
  return index.columns.size() == 1 && table.columns[static_cast<std::size_t>(index.columns[0])].isCounter;
}

// An index only makes finding quicker, so one that cannot be made does no harm. Two texts that the old engine
// took for different may be equal here, which is why a unique one may become an ordinary one.
void MakeIndex(const JetTable& table, const JetIndex& index, dao::Database& target) {
  const std::string columns = IndexColumns(table, index);
  if (columns.empty() || IsCounterKey(table, index)) return;
  std::string declaration = dao::QuoteIdentifier(index.name);
  declaration += " ON " + dao::QuoteIdentifier(table.name) + " (" + columns + ")";
  for (const bool isUnique : {true, false}) {
    if (isUnique && !index.isUnique) continue;
    try {
      return target.Execute((isUnique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + declaration);
    } catch (const EngineError&) {
      continue;
    }
  }
}

void RequireNone(const FaultList& faults) {
  if (!faults.IsEmpty()) throw EngineError(ErrorNumber::kDamaged, Describe(faults.First().front()));
}

void LoadTable(const JetDatabase& source, const std::string& name, dao::Database& target) {
  FaultList faults;
  const auto table = source.Table(name);
  if (!table) faults.Add(table.Why());
  RequireNone(faults);
  const std::vector<int> columns = MakeTable(*table, target);
  if (columns.empty()) return;
  const auto rows = target.OpenBulkRows(name);
  source.Read(
      *table, columns,
      [&](const JetRow& row) {
        rows->Insert(row.values);
        return true;
      },
      faults);
  RequireNone(faults);
  for (const JetIndex& index : table->indexes) MakeIndex(*table, index, target);
}

void LoadAll(const JetDatabase& source, dao::Database& target) {
  RequireNone(source.Faults());
  target.Execute("BEGIN");
  for (const std::string& name : source.TableNames()) LoadTable(source, name, target);
  target.Execute("COMMIT");
}

// Nobody else sees the copy in memory, which is not to be changed through record sets.
void CompleteLayout(dao::Database& log) {
  if (!core::IsLog(log) || core::ReadLogConfig(log, core::kVersionKey) != core::kFirstVersion) return;
  for (const core::LogField& field : core::ExposureFields()) {
    if (field.since == core::kFirstVersion) continue;
    log.Execute("ALTER TABLE TXray ADD COLUMN " + std::string(field.name) + " " +
                dao::DeclaredType(field.Definition()));
  }
  log.Execute("UPDATE TConfig SET tCfgSSet = '" + std::string(core::kLogVersion) +
              "' WHERE tCfgSKey = 'DBVersion'");
}

}  // namespace

bool IsJetStart(std::string_view start) {
  return IsJet(std::as_bytes(std::span(start.data(), start.size())));
}

void LoadTables(const std::filesystem::path& jetFile, dao::Database& target) {
  std::error_code error;
  const std::string name = platform::FromPath(jetFile);
  const auto content = ReadOldFile(jetFile, error);
  if (!content)
    throw EngineError(ErrorNumber::kFileNotFound, "The file '" + name + "': " + error.message() + ".");
  const auto source = JetDatabase::Open(AsBytes(*content));
  if (!source)
    throw EngineError(ErrorNumber::kUnrecognisedFormat,
                      "The file '" + name + "' cannot be read: " + Describe(source.Why()) + ".");
  try {
    LoadAll(*source, target);
  } catch (const EngineError& failure) {
    // What the storage does not accept, such as two tables of one name, no sound file holds either.
    throw EngineError(ErrorNumber::kDamaged, "The file '" + name + "' is damaged: " + failure.what() + ".");
  }
}

void InstallJetFormat(dao::DBEngine& engine) {
  engine.SetForeignFormat({IsJetStart, [](const std::string& path, dao::Database& target) {
                             LoadTables(platform::ToPath(path), target);
                             CompleteLayout(target);
                           }});
}

}  // namespace varnlog::legacy
