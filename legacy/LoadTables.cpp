#include "legacy/LoadTables.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "db/dao/BulkRows.h"
#include "db/dao/JetSql.h"
#include "db/dao/Schema.h"
#include "legacy/JetDatabase.h"
#include "legacy/OldFile.h"

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
}

}  // namespace

bool IsJetStart(std::string_view start) {
  return IsJet(std::as_bytes(std::span(start.data(), start.size())));
}

void LoadTables(const std::filesystem::path& jetFile, dao::Database& target) {
  std::error_code error;
  const auto content = ReadOldFile(jetFile, error);
  if (!content) throw EngineError(ErrorNumber::kFileNotFound, error.message());
  const auto source = JetDatabase::Open(AsBytes(*content));
  if (!source) throw EngineError(ErrorNumber::kUnrecognisedFormat, Describe(source.Why()));
  RequireNone(source->Faults());
  target.Execute("BEGIN");
  for (const std::string& name : source->TableNames()) LoadTable(*source, name, target);
  target.Execute("COMMIT");
}

}  // namespace varnlog::legacy
