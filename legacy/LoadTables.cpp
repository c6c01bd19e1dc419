#include "legacy/LoadTables.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "db/dao/BulkRows.h"
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

dao::FieldDef Definition(const JetColumn& column, FieldType type) {
  return {.name = column.name,
          .type = type,
          .size = type == FieldType::kText ? column.size : 0,
          .isCounter = column.isCounter};
}

// Makes the table; the result is the columns that it has.
std::vector<int> MakeTable(const JetTable& table, dao::Database& target) {
  std::vector<int> columns;
  std::vector<dao::FieldDef> fields;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const auto type = FieldTypeOf(table.columns[i].type);
    if (!type) continue;
    fields.push_back(Definition(table.columns[i], *type));
    columns.push_back(static_cast<int>(i));
  }
  if (!columns.empty()) target.CreateTableDef(table.name, fields);
  return columns;
}

// The names of the columns that a loaded table's index has; none when one of them was left out.
std::vector<std::string> IndexFields(const JetTable& table, const JetIndex& index) {
  std::vector<std::string> names;
  for (const int column : index.columns) {
    const JetColumn& each = table.columns[static_cast<std::size_t>(column)];
    if (!FieldTypeOf(each.type)) return {};
    names.push_back(each.name);
  }
  return names;
}

bool IsCounterKey(const JetTable& table, const JetIndex& index) {
  return index.columns.size() == 1 && table.columns[static_cast<std::size_t>(index.columns[0])].isCounter;
}

// An index only makes finding quicker, so one that cannot be made does no harm. Two texts that the old engine
// took for different may be equal here, which is why a unique one may become an ordinary one.
void MakeIndex(const JetTable& table, const JetIndex& index, dao::Database& target) {
  const std::vector<std::string> fields = IndexFields(table, index);
  if (fields.empty() || IsCounterKey(table, index)) return;
  for (const bool isUnique : {true, false}) {
    if (isUnique && !index.isUnique) continue;
    try {
      return target.TableDefs(table.name)
          .Append(dao::Index{.name = index.name, .fields = fields, .isPrimary = false, .isUnique = isUnique});
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
  dao::ChangeGroup all = target.BeginChanges();
  for (const std::string& name : source.TableNames()) LoadTable(source, name, target);
  all.Commit();
}

void CompleteLayout(dao::Database& log) {
  if (!core::IsLog(log) || core::ReadLogConfig(log, core::kVersionKey) != core::kFirstVersion) return;
  dao::TableDef exposures = log.TableDefs(core::kExposureTable);
  for (const core::LogField& field : core::ExposureFields())
    if (field.since != core::kFirstVersion) exposures.Append(field.Definition());
  core::WriteLogConfig(log, core::kVersionKey, core::kLogVersion);
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
