#include <utility>

#include "db/dao/rows/DynasetRecordset.h"
#include "db/dao/rows/SnapshotRecordset.h"
#include "db/dao/sqlite/Check.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/MissingRows.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/rows/FileRowStore.h"
#include "db/dao/sqlite/rows/FileTable.h"
#include "db/dao/sqlite/rows/ReadAll.h"

namespace varnlog::dao {

std::unique_ptr<Recordset> FileStorage::OpenTable(std::string_view table) {
  return std::make_unique<FileTable>(Self(), Table(table));
}

std::unique_ptr<Recordset> FileStorage::OpenSelect(std::string_view source, bool isTable,
                                                   std::optional<RecordsetType> type) {
  Parameters parameters;
  auto select = isTable ? SelectCache::WholeTable(*this, source) : Selects().Find(*this, source, parameters);
  const bool canEdit = select->allAreFields && !select->parsed.distinct;
  const RecordsetType wanted = type.value_or(canEdit ? RecordsetType::kDynaset : RecordsetType::kSnapshot);
  if (wanted == RecordsetType::kSnapshot)
    return std::make_unique<SnapshotRecordset>(select->fields, ReadAll(*this, *select, parameters));
  if (!canEdit) throw EngineError(ErrorNumber::kNotSupported, "The source cannot be opened as a dynaset.");
  return std::make_unique<DynasetRecordset>(
      std::make_shared<FileRowStore>(Self(), std::move(select), std::move(parameters)));
}

std::vector<std::string> FileStorage::TableNames() {
  return ReadTableNames(file_);
}

std::shared_ptr<const TableSchema> FileStorage::Table(std::string_view name) {
  std::string key = LowerName(name);
  const auto known = tables_.find(key);
  if (known != tables_.end()) return known->second;
  auto table = std::make_shared<const TableSchema>(ReadTableSchema(file_, name));
  tables_.emplace(std::move(key), table);
  return table;
}

void FileStorage::AppendTable(std::string_view name, std::span<const FieldDef> fields) {
  std::string columns;
  bool hasKey = false;
  for (const FieldDef& field : fields) {
    const bool isKey = field.isCounter && !std::exchange(hasKey, hasKey || field.isCounter);
    columns += (columns.empty() ? "" : ", ") + QuoteIdentifier(field.name) + " " +
               (isKey ? "INTEGER PRIMARY KEY AUTOINCREMENT" : DeclaredType(field));
  }
  ChangeDefinitions("CREATE TABLE " + QuoteIdentifier(name) + " (" + columns + ")");
}

void FileStorage::AppendIndex(std::string_view table, const Index& index) {
  std::string fields;
  for (const std::string& field : index.fields)
    fields += (fields.empty() ? "" : ", ") + QuoteIdentifier(field);
  ChangeDefinitions((index.isUnique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
                    QuoteIdentifier(index.name) + " ON " + QuoteIdentifier(table) + " (" + fields + ")");
}

void FileStorage::AppendField(std::string_view table, const FieldDef& field) {
  ChangeDefinitions("ALTER TABLE " + QuoteIdentifier(table) + " ADD COLUMN " + QuoteIdentifier(field.name) +
                    " " + DeclaredType(field));
}

void FileStorage::ChangeDefinitions(const std::string& storageSql) {
  WriteScope scope(*this);
  file_.Execute(storageSql);
  scope.Commit();
  ForgetSchema();
}

void FileStorage::RunStorageSql(std::string_view storageSql) {
  file_.Execute(std::string(storageSql));
  ForgetSchema();
  file_.Watch().Forget();
}

std::vector<IdRange> FileStorage::UnusedIds(std::string_view table) {
  return dao::UnusedIds(file_, std::string(table));
}

std::vector<std::string> FileStorage::Check() {
  return CheckFile(file_);
}

}  // namespace varnlog::dao
