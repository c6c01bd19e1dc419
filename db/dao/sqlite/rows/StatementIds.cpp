#include "db/dao/sqlite/rows/StatementIds.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <sqlite3.h>

#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/rows/RowCollector.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kUnlimited = std::numeric_limits<std::int64_t>::max();

class IdCollector final : public RowCollector {
 public:
  explicit IdCollector(std::vector<std::int64_t>& ids) : ids_(ids) {}
  void Take(int /*count*/, sqlite3_value** values) override {
    ids_.push_back(sqlite3_value_int64(values[0]));
  }

 private:
  std::vector<std::int64_t>& ids_;
};

}  // namespace

StatementIds::StatementIds(std::shared_ptr<FileStorage> storage, std::shared_ptr<Select> select,
                           Parameters parameters)
    : storage_(std::move(storage)), select_(std::move(select)), parameters_(std::move(parameters)) {}

// A place in the order can be named by one field's value and the row id.
bool StatementIds::CanResume() const {
  const auto& order = select_->parsed.orderBy;
  return order.empty() || (order.size() == 1 && !order.front().field.empty());
}

// Rows that are equal in the order keep the order of their ids, so that the order is the same each time.
std::string StatementIds::OrderClause() const {
  std::string clause;
  bool descending = false;
  for (const OrderTerm& term : select_->parsed.orderBy) {
    descending = term.descending;
    clause += term.storage + (descending ? " DESC, " : ", ");
  }
  return " ORDER BY " + clause + (descending ? "rowid DESC" : "rowid");
}

std::string StatementIds::IdSql(const std::string& further) const {
  return "SELECT rowid AS id FROM " + QuoteIdentifier(select_->table->name) + select_->WhereClause(further) +
         OrderClause();
}

std::string StatementIds::OrderField() const {
  return select_->parsed.orderBy.front().storage;
}

bool StatementIds::OrderFieldHasNulls() {
  if (select_->parsed.orderBy.empty()) return false;
  Statement& find =
      select_->Prepared(storage_->File(), "SELECT 1 FROM " + QuoteIdentifier(select_->table->name) +
                                              " WHERE " + OrderField() + " IS NULL LIMIT 1");
  ResetAtEnd reset(find);
  return find.Step();
}

Statement& StatementIds::First() {
  Statement& ids = select_->Prepared(storage_->File(), IdSql({}));
  BindParameters(ids, parameters_);
  return ids;
}

// True at the end of the rows for which `further` holds; `limit` goes down by the rows that were read. In
// `further`, the parameters behind those of the statement are the last row's value and id.
bool StatementIds::ReadSlice(const std::string& further, std::size_t& limit, std::vector<std::int64_t>& ids) {
  const int key = static_cast<int>(select_->parameterCount) + 1;
  const std::string from = "(" + IdSql(further) + " LIMIT ?" + std::to_string(key + 2) + ")";
  Statement& slice = select_->Prepared(storage_->File(), CollectSql("id", from, key + 3));
  BindParameters(slice, parameters_);
  if (lastKey_.RowCount() > 0) slice.Bind(key, lastKey_.At(0, 0));
  slice.Bind(key + 1, lastId_);
  slice.Bind(key + 2, static_cast<std::int64_t>(std::min<std::size_t>(limit, kUnlimited)));
  const std::size_t before = ids.size();
  IdCollector collector(ids);
  Collect(slice, key + 3, collector);
  const bool isEnd = ids.size() - before < limit;
  limit -= ids.size() - before;
  return isEnd;
}

// The rows behind the last one are found in two steps, each of which an index serves without looking at a
// row: those with the same value, then those with a later one.
bool StatementIds::ReadEqualToLast(std::size_t& limit, std::vector<std::int64_t>& ids) {
  const int key = static_cast<int>(select_->parameterCount) + 1;
  const std::string behind = select_->parsed.orderBy.front().descending ? " < ?" : " > ?";
  return ReadSlice(
      OrderField() + " = ?" + std::to_string(key) + " AND rowid" + behind + std::to_string(key + 1), limit,
      ids);
}

bool StatementIds::ReadBehindLast(std::size_t& limit, std::vector<std::int64_t>& ids) {
  const int key = static_cast<int>(select_->parameterCount) + 1;
  if (select_->parsed.orderBy.empty()) return ReadSlice("rowid > ?" + std::to_string(key + 1), limit, ids);
  const bool descending = select_->parsed.orderBy.front().descending;
  return ReadSlice(OrderField() + (descending ? " < ?" : " > ?") + std::to_string(key), limit, ids);
}

void StatementIds::Remember(std::int64_t lastId) {
  started_ = true;
  lastId_ = lastId;
  if (select_->parsed.orderBy.empty()) return;
  Statement& read =
      select_->Prepared(storage_->File(), "SELECT " + OrderField() + " FROM " +
                                              QuoteIdentifier(select_->table->name) + " WHERE rowid = ?1");
  ResetAtEnd reset(read);
  read.Bind(1, lastId);
  lastKey_ = RowSet(1);
  if (read.Step()) AppendRow(lastKey_, read);
}

// Where the storage sorts, stopping after some rows would mean sorting again for the next; and rows without a
// value have no place that the next slice could begin behind.
bool StatementIds::FetchFirst(std::size_t limit, std::vector<std::int64_t>& ids) {
  Statement& first = First();
  ResetAtEnd reset(first);
  if (!first.Step()) return true;
  ids.push_back(first.Number(0));
  --limit;
  if (!CanResume() || first.Sorted() || OrderFieldHasNulls()) limit = kUnlimited;
  for (; first.Step(); --limit) {
    if (limit == 0) return false;
    ids.push_back(first.Number(0));
  }
  return true;
}

bool StatementIds::Fetch(std::size_t rows, std::vector<std::int64_t>& ids) {
  ReadScope scope(storage_->File());
  const bool hasKey = started_ && lastKey_.RowCount() > 0;
  const bool isEnd = !started_ ? FetchFirst(rows, ids)
                               : (!hasKey || ReadEqualToLast(rows, ids)) && ReadBehindLast(rows, ids);
  if (!isEnd) Remember(ids.back());
  return isEnd;
}

}  // namespace varnlog::dao
