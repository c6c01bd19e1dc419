#include <algorithm>
#include <utility>

#include "db/dao/DBEngine.h"
#include "db/dao/rows/DynasetRecordset.h"
#include "db/dao/rows/SnapshotRecordset.h"
#include "db/dao/rows/TableRecordset.h"
#include "db/dao/sqlite/Check.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/MissingRows.h"

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

[[noreturn]] void ThrowType(std::string_view what) {
  throw EngineError(ErrorNumber::kNotSupported,
                    "The source cannot be opened as a " + std::string(what) + ".");
}

std::unique_ptr<Recordset> OpenSelect(const std::shared_ptr<Connection>& connection,
                                      std::shared_ptr<Select> select, Parameters parameters,
                                      std::optional<RecordsetType> wanted) {
  const bool canEdit = select->allAreFields && !select->parsed.distinct;
  const RecordsetType type = wanted.value_or(canEdit ? RecordsetType::kDynaset : RecordsetType::kSnapshot);
  if (type == RecordsetType::kSnapshot) {
    auto rows = ReadAll(*connection, *select, parameters);
    return std::make_unique<SnapshotRecordset>(select->fields, std::move(rows));
  }
  if (!canEdit) ThrowType("dynaset");
  return std::make_unique<DynasetRecordset>(connection, std::move(select), std::move(parameters));
}

}  // namespace

Database::Database(std::shared_ptr<Connection> connection) : connection_(std::move(connection)) {}
Database::~Database() = default;

std::string Database::Name() const {
  return connection_->Path();
}
bool Database::IsReadOnly() const {
  return connection_->IsReadOnly();
}
bool Database::WasReplaced() const {
  return connection_->WasReplaced();
}
std::vector<std::string> Database::TableNames() const {
  return ReadTableNames(*connection_);
}

TableDef Database::TableDefs(std::string_view name) {
  try {
    const TableSchema table = ReadTableSchema(*connection_, name);
    return {connection_, table.name, table.fields, table.indexes};
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kTableNotFound) throw;
    throw EngineError(ErrorNumber::kItemNotFound, error.what());
  }
}

std::unique_ptr<Recordset> Database::OpenRecordset(std::string_view source,
                                                   std::optional<RecordsetType> type) {
  static_cast<void>(connection_->Handle());  // kObjectInvalid once closed
  if (IsStatement(source)) {
    if (type == RecordsetType::kTable) ThrowType("table");
    Parameters parameters;
    auto select = connection_->Selects().Find(*connection_, source, parameters);
    return OpenSelect(connection_, std::move(select), std::move(parameters), type);
  }
  if (type.value_or(RecordsetType::kTable) == RecordsetType::kTable)
    return std::make_unique<TableRecordset>(connection_, connection_->Table(source));
  return OpenSelect(connection_, SelectCache::WholeTable(*connection_, source), {}, type);
}

void Database::Execute(std::string_view storageSql) {
  connection_->Execute(std::string(storageSql));
  connection_->ForgetSchema();
  connection_->ForgetRows();
}

void Database::SetJournal(std::shared_ptr<ChangeJournal> journal) {
  connection_->SetJournal(std::move(journal));
}

void Database::ForgoSafety() {
  connection_->ForgoSafety();
}

std::vector<IdRange> Database::UnusedIds(std::string_view table) {
  return dao::UnusedIds(*connection_, std::string(table));
}

std::vector<std::string> Database::Check() {
  return CheckFile(*connection_);
}

void Database::Close() {
  connection_->Close();
}

}  // namespace varnlog::dao
