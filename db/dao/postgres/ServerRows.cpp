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

constexpr int kGone = -1;
// Of a range of ids that is read as a whole.
constexpr std::int64_t kNarrow = 256;

// Rows as the server has sent them; a value is read when it is asked for.
class SentRows final : public RowBlock {
 public:
  SentRows(ServerResult sent, std::vector<int> places) : sent_(std::move(sent)), places_(std::move(places)) {}

  [[nodiscard]] std::size_t RowCount() const override { return places_.size(); }
  [[nodiscard]] CellView At(std::size_t row, std::size_t column) const override {
    if (places_[row] == kGone) return {.kind = CellKind::kDeleted, .integer = 0, .real = 0, .text = {}};
    return sent_.Cell(places_[row], static_cast<int>(column) + kFirstFieldColumn);
  }

 private:
  ServerResult sent_;
  std::vector<int> places_;  // of the rows in what was sent
};

// Where the rows of these ids stand, which the server sends in any order.
std::vector<int> PlacesOf(std::span<const std::int64_t> ids, const ServerResult& sent) {
  std::vector<std::pair<std::int64_t, int>> placeOf;
  placeOf.reserve(ids.size());
  for (int row = 0; row < sent.RowCount(); ++row) placeOf.emplace_back(sent.Number(row, kIdColumn), row);
  std::ranges::sort(placeOf);
  std::vector<int> places;
  places.reserve(ids.size());
  for (const std::int64_t id : ids) {
    const auto at = std::ranges::lower_bound(placeOf, id, {}, &std::pair<std::int64_t, int>::first);
    places.push_back(at == placeOf.end() || at->first != id ? kGone : at->second);
  }
  return places;
}

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

ServerResult ServerRows::Where(const std::string& condition, const ServerValues& values) {
  const std::string key = QuoteIdentifier(ServerStorage::KeyField(*select_->table));
  return storage_->Run("SELECT " + RowColumns(*select_) + " FROM " + QuoteIdentifier(select_->table->name) +
                           " WHERE " + key + condition,
                       values);
}

// All rows of a narrow range; the limit tells the server that it is one, so that it plans for every range
// once.
ServerResult ServerRows::Between(std::int64_t first, std::int64_t last) {
  const std::string from = std::to_string(first);
  const std::string to = std::to_string(last);
  return Where(" BETWEEN $1::integer AND $2::integer ORDER BY 2 LIMIT " + std::to_string(kNarrow),
               {std::string_view(from), std::string_view(to)});
}

ServerResult ServerRows::Among(std::span<const std::int64_t> ids) {
  std::string list = "{";
  for (const std::int64_t id : ids) list += (list.size() == 1 ? "" : ",") + std::to_string(id);
  list += '}';
  return Where(" = ANY($1::integer[])", {std::string_view(list)});
}

RowStore::State ServerRows::StateWithoutRows() {
  const std::int64_t version = OthersVersion();
  return {RecentStamp(), version};
}

RowStore::Block ServerRows::Read(std::span<const std::int64_t> ids) {
  if (AreFirst(ids)) {
    FirstRows first = std::exchange(*firstRows_, {});
    std::vector<int> places = PlacesOf(ids, *first.rows);
    return {std::make_shared<SentRows>(*std::move(first.rows), std::move(places)), first.state};
  }
  const auto [first, last] = std::ranges::minmax(ids);
  ServerResult found = AreDense(ids) && last - first < kNarrow ? Between(first, last) : Among(ids);
  const State state =
      found.RowCount() > 0 ? storage_->StateAt(found.Number(0, kChangesColumn)) : StateWithoutRows();
  std::vector<int> places = PlacesOf(ids, found);
  return {std::make_shared<SentRows>(std::move(found), std::move(places)), state};
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
