#include "db/dao/postgres/ServerRows.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "db/dao/postgres/ServerDialect.h"
#include "db/dao/postgres/ServerIds.h"
#include "db/dao/postgres/ServerRowWriter.h"
#include "db/dao/postgres/ServerTable.h"
#include "db/dao/rows/DynasetRecordset.h"
#include "db/dao/rows/SnapshotRecordset.h"

namespace varnlog::dao {

namespace {

bool IsText(const ResolvedSelect& select, std::size_t column) {
  const std::size_t ordinal = select.ordinals[column];
  if (ordinal >= select.table->fields.size()) return false;
  const FieldType type = select.table->fields[ordinal].type;
  return type == FieldType::kText || type == FieldType::kMemo;
}

std::string SnapshotSql(const ResolvedSelect& select) {
  return "SELECT " + select.ColumnList() + " FROM " + QuoteIdentifier(select.table->name) +
         select.WhereClause() + ServerOrder(select, {});
}

/// Whether an index can help to find the rows.
bool IsByIndex(const ResolvedSelect& select) {
  const std::string where = select.WhereClause();
  return std::ranges::any_of(select.table->firstStoredFields, [&where](const std::string& field) {
    return where.find(QuoteIdentifier(field)) != std::string::npos;
  });
}

// Of rows that are equal by the order of texts the first one that was added stays. The different combinations
// of the fields are found first: what is slow is done once for each of them. OFFSET keeps the server from
// doing it for each row after all.
std::string DistinctSql(const ResolvedSelect& select) {
  const std::string key = QuoteIdentifier(ServerStorage::KeyField(*select.table));
  std::string fields;
  for (const std::string& field : select.parsed.fields) {
    const auto& def = select.table->fields[*select.table->FieldAt(field)];
    fields += (fields.empty() ? "" : ", ") + QuoteIdentifier(def.name);
  }
  std::string columns;
  std::string distinct;
  std::string names;
  for (std::size_t i = 0; i < select.columns.size(); ++i) {
    const std::string name = "c" + std::to_string(i);
    const std::string order = IsText(select, i)               ? ServerTextKey(select.columns[i])
                              : select.parsed.columns.empty() ? select.columns[i]
                                                              : select.parsed.columns[i].order;
    const std::string comma = i == 0 ? "" : ", ";
    columns += comma + select.columns[i] + " AS " + name + ", " + order + " AS k" + std::to_string(i);
    distinct += comma + "k" + std::to_string(i);
    names += comma + name;
  }
  std::string terms;
  for (const OrderTerm& term : select.parsed.orderBy) {
    const auto column = std::ranges::find_if(
        select.parsed.columns, [&term](const SelectColumn& each) { return each.order == term.storage; });
    if (column == select.parsed.columns.end())
      throw EngineError(ErrorNumber::kSyntaxError, "DISTINCT is ordered by its own columns only.");
    terms += (terms.empty() ? "" : ", ") + std::string("k") +
             std::to_string(column - select.parsed.columns.begin()) +
             (term.descending ? " DESC NULLS LAST" : " NULLS FIRST");
  }
  std::string byAll;
  for (std::size_t i = 0; i < select.columns.size(); ++i)
    byAll += (i == 0 ? "k" : ", k") + std::to_string(i) + " NULLS FIRST";
  const std::string from = fields.empty()
                               ? QuoteIdentifier(select.table->name)
                               : "(SELECT " + fields + ", min(" + key + ") AS varnlog_first FROM " +
                                     QuoteIdentifier(select.table->name) + " GROUP BY " + fields +
                                     (IsByIndex(select) ? "" : " OFFSET 0") + ") AS combinations";
  const std::string first = fields.empty() ? "" : ", varnlog_first";
  const std::string inner = "SELECT DISTINCT ON (" + distinct + ") * FROM (SELECT " + columns + first +
                            " FROM " + from + select.WhereClause() + ") AS matching ORDER BY " + byAll +
                            first;
  return "SELECT " + names + " FROM (" + inner + ") AS different ORDER BY " + (terms.empty() ? byAll : terms);
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
  std::unordered_map<std::int64_t, int> rowOf;
  for (int row = 0; row < found.RowCount(); ++row) rowOf.emplace(found.Number(row, 1), row);
  for (const std::int64_t id : ids) {
    const auto at = rowOf.find(id);
    if (at == rowOf.end())
      rows.AppendDeleted();
    else
      rows.Append([&](std::size_t column) { return found.Cell(at->second, static_cast<int>(column) + 2); });
  }
  if (found.RowCount() > 0) return storage_->StateAt(found.Number(0, 0));
  const std::int64_t version = storage_->OthersVersion();
  return {RecentStamp(), version};
}

std::shared_ptr<const RowSet> ReadAll(ServerStorage& storage, const ResolvedSelect& select) {
  const bool isDistinct = select.parsed.distinct && !select.parsed.allFields;
  const ServerResult found = storage.RunOnce(isDistinct ? DistinctSql(select) : SnapshotSql(select));
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
