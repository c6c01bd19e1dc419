#include <utility>

#include "db/dao/BulkRows.h"
#include "db/dao/TableScan.h"
#include "db/dao/ValueIndex.h"
#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// A table's name is one word, or stands in brackets.
bool IsStatement(std::string_view source) {
  while (!source.empty() && IsBlank(source.front())) source.remove_prefix(1);
  constexpr std::string_view kSelect = "SELECT";
  return SameName(source.substr(0, kSelect.size()), kSelect) && source.size() > kSelect.size() &&
         (IsBlank(source[kSelect.size()]) || source[kSelect.size()] == '[' || source[kSelect.size()] == '*');
}

}  // namespace

Database::Database(std::shared_ptr<Storage> storage) : storage_(std::move(storage)) {}
Database::~Database() = default;

std::string Database::Name() const {
  return storage_->Path();
}
bool Database::IsReadOnly() const {
  return storage_->IsReadOnly();
}
bool Database::WasReplaced() const {
  return storage_->WasReplaced();
}
std::vector<std::string> Database::TableNames() const {
  return storage_->TableNames();
}

TableDef Database::TableDefs(std::string_view name) {
  try {
    const auto table = storage_->Table(name);
    return {storage_, table->name, table->fields, table->indexes};
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kTableNotFound) throw;
    throw EngineError(ErrorNumber::kItemNotFound, error.what());
  }
}

TableDef Database::CreateTableDef(std::string_view name, std::span<const FieldDef> fields) {
  storage_->AppendTable(name, fields);
  return TableDefs(name);
}

std::unique_ptr<Recordset> Database::OpenRecordset(std::string_view source,
                                                   std::optional<RecordsetType> type) {
  if (!storage_->IsOpen()) throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
  const bool isTable = !IsStatement(source);
  const bool wantsTable = type.value_or(RecordsetType::kTable) == RecordsetType::kTable;
  if (isTable && wantsTable) return storage_->OpenTable(source);
  if (type == RecordsetType::kTable)
    throw EngineError(ErrorNumber::kNotSupported, "The source cannot be opened as a table.");
  return storage_->OpenSelect(source, isTable, type);
}

void Database::Execute(std::string_view storageSql) {
  storage_->RunStorageSql(storageSql);
}

void Database::ForgoSafety() {
  storage_->ForgoSafety();
}

std::unique_ptr<BulkRows> Database::OpenBulkRows(std::string_view table) {
  return storage_->OpenBulkRows(table);
}

std::vector<IdRange> Database::UnusedIds(std::string_view table) {
  return storage_->UnusedIds(table);
}

std::unique_ptr<TableScan> Database::Scan(std::string_view table, std::span<const std::string> fields,
                                          const ScanRange& range) {
  return storage_->Scan(table, fields, range);
}

std::unique_ptr<ValueIndex> Database::IndexValues(std::string_view table,
                                                  std::span<const IndexedColumn> columns) {
  return storage_->IndexValues(table, columns);
}

std::int64_t Database::Greatest(std::string_view table, std::string_view field) {
  return storage_->Greatest(table, field);
}

RowStamp Database::Stamp() {
  if (!storage_->IsOpen()) throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
  return storage_->Stamp();
}

void Database::SetJournal(std::shared_ptr<ChangeJournal> journal) {
  storage_->SetJournal(std::move(journal));
}

bool Database::HasRules(std::span<const std::string> rules) {
  return storage_->HasRules(rules);
}

void Database::SetRules(std::span<const std::string> rules) {
  storage_->SetRules(rules);
}

// Only what was compared with rules of the program's own is let run.
bool Database::ObeyRules(std::span<const std::string> rules) {
  if (!storage_->HasRules(rules)) return false;
  storage_->SetRulesObeyed(true);
  return true;
}

void Database::CopyTo(const std::string& target, const MaintenanceProgress& progress) {
  storage_->CopyTo(target, progress);
}

std::string Database::CopyInto(const std::string& existing, const MaintenanceProgress& progress) {
  return storage_->CopyInto(existing, progress);
}

std::optional<ServerState> Database::Server() {
  return storage_->Server();
}

std::vector<std::string> Database::Check() {
  return storage_->Check();
}

void Database::Close() {
  storage_->Close();
}

}  // namespace varnlog::dao
