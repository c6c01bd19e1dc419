#include "db/dao/sqlite/rows/OrderedIds.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include <sqlite3.h>

#include "db/dao/rows/TextOrder.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/rows/RowCollector.h"

namespace varnlog::dao {

/// What decides which rows come in which order.
struct OrderedIds::Order {
  std::string table;
  std::string where;
  Parameters parameters;
  std::string columns;  // of the order, in the storage's SQL
  std::vector<TextOrder::Term> terms;

  [[nodiscard]] bool SameRowsAndColumns(const Order& other) const {
    return table == other.table && where == other.where && parameters == other.parameters &&
           columns == other.columns;
  }
  /// Whether each term's direction is the other's, or each is the opposite.
  [[nodiscard]] bool SameDirections(const Order& other, bool reversed) const {
    return std::equal(terms.begin(), terms.end(), other.terms.begin(), other.terms.end(),
                      [reversed](const TextOrder::Term& a, const TextOrder::Term& b) {
                        return (a.descending != b.descending) == reversed;
                      });
  }
};

namespace {

bool IsText(FieldType type) {
  return type == FieldType::kText || type == FieldType::kMemo;
}

/// Nothing when a term is neither a text nor a date field.
std::optional<std::vector<TextOrder::Term>> TermsOf(const Select& select) {
  std::vector<TextOrder::Term> terms;
  for (const OrderTerm& term : select.parsed.orderBy) {
    const auto ordinal = term.field.empty() ? std::nullopt : select.table->FieldAt(term.field);
    if (!ordinal) return std::nullopt;
    const FieldType type = select.table->fields[*ordinal].type;
    if (!IsText(type) && type != FieldType::kDate) return std::nullopt;
    terms.push_back({IsText(type), term.descending});
  }
  // A date in front has an index.
  if (terms.empty() || !terms.front().collated) return std::nullopt;
  return terms;
}

class OrderCollector final : public RowCollector {
 public:
  explicit OrderCollector(const std::vector<TextOrder::Term>& terms) : order_(terms), texts_(terms.size()) {}

  /// The row's id and then a value for each term.
  void Take(int count, sqlite3_value** values) override {
    if (gaveUp_) return;
    for (int i = 1; i < count; ++i) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values[i]));
      auto& taken = texts_[static_cast<std::size_t>(i) - 1];
      if (text == nullptr) {
        taken.reset();
      } else {
        taken = std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(values[i])));
      }
    }
    gaveUp_ = !order_.Add(sqlite3_value_int64(values[0]), texts_);
  }

  [[nodiscard]] bool gaveUp() const { return gaveUp_; }
  [[nodiscard]] std::vector<std::int64_t> Finish() { return order_.Finish(); }

 private:
  TextOrder order_;
  std::vector<std::optional<std::string_view>> texts_;
  bool gaveUp_ = false;
};

}  // namespace

std::optional<std::vector<std::int64_t>> OrderedIds::Find(Connection& connection, const Select& select,
                                                          const Parameters& parameters) {
  const auto terms = TermsOf(select);
  if (!terms) return std::nullopt;
  Order order{select.table->name, select.WhereClause(), parameters, "rowid", *terms};
  for (const OrderTerm& term : select.parsed.orderBy) order.columns += ", " + term.storage;

  // What is read within a transaction may yet be undone.
  const bool mayBeUndone = connection.InTransaction();
  const ReadScope scope(connection);
  // The first look at the table holds off other writers, so this is the stamp of all that follows.
  const std::string table = QuoteIdentifier(order.table);
  Statement(connection, "SELECT 1 FROM " + table + " LIMIT 1").Run();
  const RowStamp stamp = connection.Watch().Current();
  if (auto ids = FromLast(order, stamp)) return ids;

  const int last = static_cast<int>(select.parameterCount) + 1;
  Statement scan(connection, CollectSql(order.columns, table + order.where, last));
  BindParameters(scan, parameters);
  OrderCollector collector(*terms);
  Collect(scan, last, collector);
  if (collector.gaveUp()) return std::nullopt;
  std::vector<std::int64_t> ids = collector.Finish();
  if (!mayBeUndone) Keep(std::move(order), stamp, ids);
  return ids;
}

std::optional<std::vector<std::int64_t>> OrderedIds::FromLast(const Order& wanted,
                                                              const RowStamp& stamp) const {
  if (last_ == nullptr || stamp != stamp_ || !wanted.SameRowsAndColumns(*last_)) return std::nullopt;
  if (wanted.SameDirections(*last_, false)) return std::vector<std::int64_t>(ids_.begin(), ids_.end());
  if (wanted.SameDirections(*last_, true)) return std::vector<std::int64_t>(ids_.rbegin(), ids_.rend());
  return std::nullopt;
}

void OrderedIds::Keep(Order order, const RowStamp& stamp, const std::vector<std::int64_t>& ids) {
  last_.reset();
  ids_ = {};
  const auto isSmall = [](std::int64_t id) {
    return id >= 0 && id <= std::int64_t{std::numeric_limits<std::uint32_t>::max()};
  };
  if (!std::all_of(ids.begin(), ids.end(), isSmall)) return;
  ids_.reserve(ids.size());
  for (const std::int64_t id : ids) ids_.push_back(static_cast<std::uint32_t>(id));
  last_ = std::make_shared<const Order>(std::move(order));
  stamp_ = stamp;
}

}  // namespace varnlog::dao
