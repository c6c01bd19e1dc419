#include "db/dao/postgres/ServerRows.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "db/dao/postgres/ServerDialect.h"
#include "db/dao/postgres/ServerDistinct.h"
#include "db/dao/postgres/ServerIds.h"
#include "db/dao/postgres/ServerRowWriter.h"
#include "db/dao/postgres/ServerTable.h"
#include "db/dao/rows/DynasetRecordset.h"
#include "db/dao/rows/SnapshotRecordset.h"

namespace varnlog::dao {

namespace {

std::string SnapshotSql(const ResolvedSelect& select) {
  return "SELECT " + select.ColumnList() + " FROM " + QuoteIdentifier(select.table->name) +
         select.WhereClause() + ServerOrder(select, {});
}

}  // namespace

std::string ServerOrder(const ResolvedSelect& select, const std::string& key) {
  std::string clause;
  bool descending = false;
  for (const OrderTerm& term : select.parsed.orderBy) {
    descending = term.descending;
    clause += (clause.empty() ? " ORDER BY " : ", ") + term.storage +
              (descending ? " DESC NULLS LAST" : " NULLS FIRST");
  }
  if (key.empty()) return clause;
  return clause + (clause.empty() ? " ORDER BY " : ", ") + key + (descending ? " DESC" : "");
}

std::unique_ptr<IdSource> ServerRows::MakeIds() {
  return std::make_unique<ServerIds>(storage_, select_, firstRows_);
}

std::unique_ptr<RowWriter> ServerRows::MakeWriter() {
  return std::make_unique<ServerRowWriter>(storage_, select_->table, select_->ordinals);
}

// They were read with their ids, and nothing has changed since.
bool ServerRows::AreFirst(std::span<const std::int64_t> ids) {
  return storage_->IsOpen() && firstRows_->rows && ids.size() <= firstRows_->ids.size() &&
         std::ranges::equal(ids, std::span(firstRows_->ids).first(ids.size())) &&
         firstRows_->state.stamp == RecentStamp();
}

RowStore::State ServerRows::Read(std::span<const std::int64_t> ids, RowSet& rows) {
  if (AreFirst(ids)) {
    const FirstRows first = std::exchange(*firstRows_, {});
    for (int row = 0; row < static_cast<int>(ids.size()); ++row)
      rows.Append([&](std::size_t column) { return first.rows->Cell(row, static_cast<int>(column) + 2); });
    return first.state;
  }
  const std::string key = QuoteIdentifier(ServerStorage::KeyField(*select_->table));
  std::string list = "{";
  for (const std::int64_t id : ids) list += (list.size() == 1 ? "" : ",") + std::to_string(id);
  list += '}';
  // The number of changes comes with the rows, so that it is the one of their state.
  const ServerResult found =
      storage_->Run("SELECT (SELECT value FROM varnlog_state WHERE name = 'changes'), " + key + ", " +
                        select_->ColumnList() + " FROM " + QuoteIdentifier(select_->table->name) + " WHERE " +
                        key + " = ANY($1::integer[])",
                    {std::string_view(list)});
  std::vector<std::pair<std::int64_t, int>> rowOf;
  for (int row = 0; row < found.RowCount(); ++row) rowOf.emplace_back(found.Number(row, 1), row);
  std::ranges::sort(rowOf);
  for (const std::int64_t id : ids) {
    const auto at = std::ranges::lower_bound(rowOf, id, {}, &std::pair<std::int64_t, int>::first);
    if (at == rowOf.end() || at->first != id)
      rows.AppendDeleted();
    else
      rows.Append([&](std::size_t column) { return found.Cell(at->second, static_cast<int>(column) + 2); });
  }
  if (found.RowCount() > 0) return storage_->StateAt(found.Number(0, 0));
  const std::int64_t version = storage_->OthersVersion();
  return {RecentStamp(), version};
}

std::shared_ptr<const RowSet> ReadAll(ServerStorage& storage, const ResolvedSelect& select) {
  if (select.parsed.distinct && !select.parsed.allFields) return ReadDistinct(storage, select);
  const ServerResult found = storage.RunOnce(SnapshotSql(select));
  auto rows = std::make_shared<RowSet>(select.columns.size());
  for (int row = 0; row < found.RowCount(); ++row)
    rows->Append([&](std::size_t column) { return found.Cell(row, static_cast<int>(column)); });
  return rows;
}

std::unique_ptr<Recordset> ServerStorage::OpenTable(std::string_view table) {
  return std::make_unique<ServerTable>(std::static_pointer_cast<ServerStorage>(shared_from_this()),
                                       Table(table));
}

std::unique_ptr<Recordset> ServerStorage::OpenSelect(std::string_view source, bool isTable,
                                                     std::optional<RecordsetType> type) {
  SelectStatement parsed;
  if (isTable) {
    parsed.allFields = true;
    parsed.table = source;
  } else {
    ServerDialect dialect(*this);
    parsed = ParseSelect(source, dialect);
  }
  auto table = Table(parsed.table);
  auto select = std::make_shared<const ResolvedSelect>(std::move(parsed), std::move(table));
  const bool canEdit = select->allAreFields && !select->parsed.distinct;
  const RecordsetType wanted = type.value_or(canEdit ? RecordsetType::kDynaset : RecordsetType::kSnapshot);
  if (wanted == RecordsetType::kSnapshot)
    return std::make_unique<SnapshotRecordset>(select->fields, ReadAll(*this, *select));
  if (!canEdit) throw EngineError(ErrorNumber::kNotSupported, "The source cannot be opened as a dynaset.");
  return std::make_unique<DynasetRecordset>(std::make_shared<ServerRows>(
      std::static_pointer_cast<ServerStorage>(shared_from_this()), std::move(select)));
}

}  // namespace varnlog::dao
