#include "db/dao/IdSource.h"

#include <limits>
#include <utility>

#include "db/dao/Connection.h"

namespace varnlog::dao {

namespace {

void BindView(Statement& statement, int parameter, const CellView& value) {
  if (value.kind == CellKind::kInteger) return statement.Bind(parameter, value.integer);
  if (value.kind == CellKind::kReal) return statement.Bind(parameter, value.real);
  if (value.kind == CellKind::kText) return statement.Bind(parameter, value.text);
  statement.BindNull(parameter);
}

}  // namespace

bool ComputedIds::Fetch(std::size_t /*rows*/, std::vector<std::int64_t>& ids) {
  if (ids.empty())
    ids = std::move(ids_);
  else
    ids.insert(ids.end(), ids_.begin(), ids_.end());
  ids_.clear();
  return true;
}

StatementIds::StatementIds(std::shared_ptr<Connection> connection, std::shared_ptr<Select> select,
                           Parameters parameters)
    : connection_(std::move(connection)), select_(std::move(select)), parameters_(std::move(parameters)) {}

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
  return "SELECT rowid FROM " + QuoteIdentifier(select_->table->name) + select_->WhereClause(further) +
         OrderClause();
}

std::string StatementIds::BehindLast() const {
  const std::size_t first = select_->parameterCount + 1;
  const std::string id = "?" + std::to_string(first);
  if (select_->parsed.orderBy.empty()) return "rowid > " + id;
  const OrderTerm& term = select_->parsed.orderBy.front();
  const std::string key = "?" + std::to_string(first + 1);
  const std::string behind = term.descending ? " < " : " > ";
  // The first condition is the one that an index serves.
  return term.storage + (term.descending ? " <= " : " >= ") + key + " AND (" + term.storage + behind + key +
         " OR rowid" + behind + id + ")";
}

bool StatementIds::OrderFieldHasNulls() {
  if (select_->parsed.orderBy.empty()) return false;
  Statement& find =
      select_->Prepared(*connection_, "SELECT 1 FROM " + QuoteIdentifier(select_->table->name) + " WHERE " +
                                          select_->parsed.orderBy.front().storage + " IS NULL LIMIT 1");
  ResetAtEnd reset(find);
  return find.Step();
}

Statement& StatementIds::NextStatement() {
  Statement& ids = select_->Prepared(*connection_, IdSql(started_ ? BehindLast() : std::string()));
  BindParameters(ids, parameters_);
  if (!started_) return ids;
  const int first = static_cast<int>(select_->parameterCount) + 1;
  ids.Bind(first, lastId_);
  if (lastKey_.RowCount() > 0) BindView(ids, first + 1, lastKey_.At(0, 0));
  return ids;
}

void StatementIds::Remember(std::int64_t lastId) {
  started_ = true;
  lastId_ = lastId;
  if (select_->parsed.orderBy.empty()) return;
  Statement& read =
      select_->Prepared(*connection_, "SELECT " + select_->parsed.orderBy.front().storage + " FROM " +
                                          QuoteIdentifier(select_->table->name) + " WHERE rowid = ?1");
  ResetAtEnd reset(read);
  read.Bind(1, lastId);
  lastKey_ = RowSet(1);
  if (read.Step()) lastKey_.Append(read);
}

bool StatementIds::Fetch(std::size_t rows, std::vector<std::int64_t>& ids) {
  ReadScope scope(*connection_);
  Statement& next = NextStatement();
  ResetAtEnd reset(next);
  const std::size_t all = std::numeric_limits<std::size_t>::max();
  std::size_t limit = all;
  for (std::size_t fetched = 0; next.Step(); ++fetched) {
    // Rows without a value have no place that the next slice could begin behind.
    if (fetched == 0 && CanResume() && !next.Sorted() && (started_ || !OrderFieldHasNulls())) limit = rows;
    if (fetched == limit) {
      Remember(ids.back());
      return false;
    }
    ids.push_back(next.Number(0));
  }
  return true;
}

}  // namespace varnlog::dao
