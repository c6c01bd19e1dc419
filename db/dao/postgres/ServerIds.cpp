#include "db/dao/postgres/ServerIds.h"

#include <algorithm>
#include <charconv>

#include "db/dao/postgres/ServerRows.h"

namespace varnlog::dao {

std::string RowColumns(const ResolvedSelect& select) {
  return "(SELECT value FROM varnlog_state WHERE name = 'changes'), " +
         QuoteIdentifier(ServerStorage::KeyField(*select.table)) + ", " + select.ColumnList();
}

ServerIds::ServerIds(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const ResolvedSelect> select,
                     std::shared_ptr<FirstRows> firstRows)
    : storage_(std::move(storage)),
      select_(std::move(select)),
      firstRows_(std::move(firstRows)),
      key_(QuoteIdentifier(ServerStorage::KeyField(*select_->table))) {
  const auto& terms = select_->parsed.orderBy;
  if (terms.size() != 1) return;
  order_ = terms.front().storage;
  descending_ = terms.front().descending;
}

// Texts have no index, so that every slice would be sorted anew.
bool ServerIds::CanResume() const {
  const auto& terms = select_->parsed.orderBy;
  if (terms.empty()) return true;
  if (terms.size() != 1 || terms.front().field.empty()) return false;
  const auto ordinal = select_->table->FieldAt(terms.front().field);
  return ordinal && select_->table->HasIndexOn(*ordinal);
}

// Sorting is quickest in pieces that a processor's cache holds.
bool ServerIds::FetchWhole(std::vector<std::int64_t>& ids) {
  storage_->CopyOut("SET LOCAL work_mem = '4MB'; COPY (SELECT " + key_ + " FROM " +
                        QuoteIdentifier(select_->table->name) + select_->WhereClause() +
                        ServerOrder(*select_, key_) + ") TO STDOUT",
                    [&ids](std::string_view line) {
                      std::int64_t id = 0;
                      std::from_chars(line.data(), line.data() + line.size(), id);
                      ids.push_back(id);
                    });
  return true;
}

void ServerIds::NoteLast(const ServerResult& slice, int idColumn, int valueColumn) {
  const int last = slice.RowCount() - 1;
  if (last < 0) return;
  lastId_ = slice.Number(last, idColumn);
  if (!order_.empty()) lastValue_ = slice.Text(last, valueColumn);
}

// Rows without a value have no place that the next slice could begin behind. They come first or, in
// descending order, last.
bool ServerIds::FetchFirst(std::size_t rows, std::vector<std::int64_t>& ids) {
  ServerResult slice =
      storage_->Run("SELECT " + RowColumns(*select_) + ", " + (order_.empty() ? key_ : order_) + " FROM " +
                    QuoteIdentifier(select_->table->name) + select_->WhereClause() +
                    ServerOrder(*select_, key_) + " LIMIT " + std::to_string(rows));
  const int count = slice.RowCount();
  const int valueColumn = slice.ColumnCount() - 1;
  const bool isAll = static_cast<std::size_t>(count) < rows;
  if (!isAll && (slice.IsNull(0, valueColumn) || slice.IsNull(count - 1, valueColumn))) {
    whole_ = true;
    return FetchWhole(ids);
  }
  NoteLast(slice, kIdColumn, valueColumn);
  for (int row = 0; row < count; ++row) ids.push_back(slice.Number(row, kIdColumn));
  if (count == 0) return isAll;
  const RowStore::State state = storage_->StateAt(slice.Number(0, kChangesColumn));
  *firstRows_ = {ids, std::move(slice), state};
  return isAll;
}

bool ServerIds::FetchSlice(std::size_t rows, std::vector<std::int64_t>& ids) {
  const std::string behind = descending_ ? " < " : " > ";
  const std::string place = order_.empty() ? key_ + behind + std::to_string(lastId_)
                                           : "(" + order_ + ", " + key_ + ")" + behind + "(" +
                                                 QuoteText(lastValue_) + ", " + std::to_string(lastId_) + ")";
  constexpr std::size_t kMostAtOnce = 1'000'000;
  const std::size_t limit = std::min(rows, kMostAtOnce);
  const auto read = [&](const std::string& condition, const std::string& most) {
    return storage_->RunOnce("SELECT " + key_ + (order_.empty() ? "" : ", " + order_) + " FROM " +
                             QuoteIdentifier(select_->table->name) + select_->WhereClause(condition) +
                             ServerOrder(*select_, key_) + most);
  };
  const ServerResult slice = read(place, " LIMIT " + std::to_string(limit));
  const int count = slice.RowCount();
  for (int row = 0; row < count; ++row) ids.push_back(slice.Number(row, 0));
  NoteLast(slice, 0, 1);
  if (static_cast<std::size_t>(count) == limit) return false;
  if (order_.empty() || !descending_) return true;
  const ServerResult last = read(order_ + " IS NULL", "");
  for (int row = 0; row < last.RowCount(); ++row) ids.push_back(last.Number(row, 0));
  return true;
}

bool ServerIds::Fetch(std::size_t rows, std::vector<std::int64_t>& ids) {
  if (started_) return whole_ || FetchSlice(rows, ids);
  started_ = true;
  if (CanResume()) return FetchFirst(rows, ids);
  whole_ = true;
  return FetchWhole(ids);
}

}  // namespace varnlog::dao
