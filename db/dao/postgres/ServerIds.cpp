#include "db/dao/postgres/ServerIds.h"

#include <algorithm>
#include <charconv>

#include "db/dao/postgres/ServerRows.h"

namespace varnlog::dao {

ServerIds::ServerIds(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const ResolvedSelect> select)
    : storage_(std::move(storage)),
      select_(std::move(select)),
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

// Rows without a value have no place that the next slice could begin behind.
bool ServerIds::HasNulls() {
  if (order_.empty()) return false;
  return storage_
             ->RunOnce("SELECT 1 FROM " + QuoteIdentifier(select_->table->name) + " WHERE " + order_ +
                       " IS NULL LIMIT 1")
             .RowCount() > 0;
}

bool ServerIds::FetchWhole(std::vector<std::int64_t>& ids) {
  storage_->CopyOut("COPY (SELECT " + key_ + " FROM " + QuoteIdentifier(select_->table->name) +
                        select_->WhereClause() + ServerOrder(*select_, key_) + ") TO STDOUT",
                    [&ids](std::string_view line) {
                      std::int64_t id = 0;
                      std::from_chars(line.data(), line.data() + line.size(), id);
                      ids.push_back(id);
                    });
  return true;
}

bool ServerIds::FetchSlice(std::size_t rows, std::vector<std::int64_t>& ids) {
  const std::string behind = descending_ ? " < " : " > ";
  std::string further;
  if (started_)
    further = order_.empty() ? key_ + behind + std::to_string(lastId_)
                             : "(" + order_ + ", " + key_ + ")" + behind + "(" + QuoteText(lastValue_) +
                                   ", " + std::to_string(lastId_) + ")";
  constexpr std::size_t kMostAtOnce = 1'000'000;
  const std::size_t limit = std::min(rows, kMostAtOnce);
  const std::string columns = order_.empty() ? key_ : key_ + ", " + order_;
  const ServerResult slice = storage_->RunOnce(
      "SELECT " + columns + " FROM " + QuoteIdentifier(select_->table->name) + select_->WhereClause(further) +
      ServerOrder(*select_, key_) + " LIMIT " + std::to_string(limit));
  const int count = slice.RowCount();
  for (int row = 0; row < count; ++row) ids.push_back(slice.Number(row, 0));
  if (count > 0) {
    lastId_ = ids.back();
    if (!order_.empty()) lastValue_ = slice.Text(count - 1, 1);
  }
  started_ = true;
  return static_cast<std::size_t>(count) < limit;
}

bool ServerIds::Fetch(std::size_t rows, std::vector<std::int64_t>& ids) {
  if (!started_) whole_ = !CanResume() || HasNulls();
  return whole_ ? FetchWhole(ids) : FetchSlice(rows, ids);
}

}  // namespace varnlog::dao
