#include "db/dao/sqlite/rows/DistinctRows.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "db/dao/rows/TextOrder.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Statement.h"
#include "db/dao/sqlite/rows/DifferentRows.h"
#include "db/dao/sqlite/rows/RowCollector.h"
#include "db/dao/text/Collation.h"

namespace varnlog::dao {
namespace {

/// More combinations than this are as slow to read as the table, and would take tens of megabytes.
constexpr std::size_t kMostCombinations = 100'000;
/// Every window of the program together asks for two.
constexpr std::size_t kMostKept = 8;

using Fields = std::vector<const FieldDef*>;

std::string Key(const TableSchema& table, const Fields& fields) {
  std::string key = LowerName(table.name);
  for (const FieldDef* field : fields) key += '\0' + LowerName(field->name);
  return key;
}

std::string FieldList(const Fields& fields) {
  std::string list;
  for (const FieldDef* field : fields) list += (list.empty() ? "" : ", ") + QuoteIdentifier(field->name);
  return list;
}

std::string CreateSql(const TableSchema& table, const Fields& fields) {
  std::string columns;
  for (const FieldDef* field : fields) {
    columns += (columns.empty() ? "" : ", ") + QuoteIdentifier(field->name) + " " + DeclaredType(*field);
  }
  return "CREATE TABLE " + QuoteIdentifier(table.name) + " (" + columns + ", " + DistinctRows::kGroupColumn +
         " INTEGER)";
}

/// Whether the values, which are handled as texts, are in the same order as such.
bool HasTextOrder(const FieldDef& field) {
  return field.type != FieldType::kLong && field.type != FieldType::kDouble;
}

bool IsCollated(const FieldDef& field) {
  return field.type == FieldType::kText || field.type == FieldType::kMemo;
}

/// The rows' numbers in the order of the fields; nothing when their values take too much memory.
std::optional<std::vector<std::int64_t>> InOrder(const DifferentRows& rows, const Fields& fields) {
  std::vector<TextOrder::Term> terms;
  for (const FieldDef* field : fields) terms.push_back({.collated = IsCollated(*field), .descending = false});
  TextOrder order(terms, rows.Count());
  RowTexts row;
  for (std::size_t i = 0; i < rows.Count(); ++i) {
    rows.Get(i, row);
    if (!order.Add(static_cast<std::int64_t>(i), row)) return std::nullopt;
  }
  return order.Finish();
}

bool AreEqual(const RowTexts& a, const RowTexts& b, const Fields& fields) {
  const Collation& collation = Collation::Instance();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (a[i] == b[i]) continue;
    if (!a[i] || !b[i] || !IsCollated(*fields[i]) || collation.Compare(*a[i], *b[i]) != 0) return false;
  }
  return true;
}

/// Replaces what the table in memory holds.
void Replace(Connection& target, const TableSchema& table, const Fields& fields, const DifferentRows& rows,
             const std::vector<std::int64_t>& order) {
  // Of what a failure leaves nothing is used.
  target.Rollback();
  target.BeginWriting();
  target.Execute("DELETE FROM " + QuoteIdentifier(table.name));
  std::string parameters = "?";
  for (std::size_t i = 0; i < fields.size(); ++i) parameters += ", ?";
  Statement insert(target, "INSERT INTO " + QuoteIdentifier(table.name) + " VALUES (" + parameters + ")");
  RowTexts row;
  RowTexts before;
  std::int64_t group = 0;
  for (const std::int64_t number : order) {
    rows.Get(static_cast<std::size_t>(number), row);
    int parameter = 0;
    for (const auto& text : row) text ? insert.Bind(++parameter, *text) : insert.BindNull(++parameter);
    if (before.empty() || !AreEqual(before, row, fields)) ++group;
    insert.Bind(++parameter, group);
    insert.Run();
    before.swap(row);
  }
  target.Commit();
}

}  // namespace

std::shared_ptr<Connection> DistinctRows::Find(Connection& source, const TableSchema& table,
                                               const std::vector<std::string>& fields) {
  if (fields.empty() || source.InTransaction()) return nullptr;
  Fields defs;
  for (const std::string& field : fields) {
    const auto ordinal = table.FieldAt(field);
    if (!ordinal || !HasTextOrder(table.fields[*ordinal])) return nullptr;
    defs.push_back(&table.fields[*ordinal]);
  }
  Kept* const kept = Entry(source, table, defs);
  if (kept == nullptr) return nullptr;
  if (!kept->current || kept->stamp != source.Watch().Current()) Fill(*kept, source, table, defs);
  return kept->tooMany ? nullptr : kept->rows;
}

DistinctRows::Kept* DistinctRows::Entry(Connection& source, const TableSchema& table, const Fields& fields) {
  std::string key = Key(table, fields);
  const auto known =
      std::find_if(kept_.begin(), kept_.end(), [&key](const auto& kept) { return kept->key == key; });
  if (known != kept_.end()) return known->get();
  if (kept_.size() == kMostKept) return nullptr;
  auto kept = std::make_unique<Kept>();
  kept->key = std::move(key);
  kept->rows = std::make_shared<Connection>(source.Path(), source.State());
  kept->rows->OpenInMemory();
  kept->rows->Execute(CreateSql(table, fields));
  kept_.push_back(std::move(kept));
  return kept_.back().get();
}

void DistinctRows::Fill(Kept& kept, Connection& source, const TableSchema& table, const Fields& fields) {
  kept.current = false;
  DifferentRows combinations(kMostCombinations);
  {
    const ReadScope scope(source);
    const std::string from = QuoteIdentifier(table.name);
    // The first look at the table holds off other writers, so this is the stamp of all that follows.
    Statement(source, "SELECT 1 FROM " + from + " LIMIT 1").Run();
    kept.stamp = source.Watch().Current();
    Statement scan(source, CollectSql(FieldList(fields), from, 1));
    Collect(scan, 1, combinations);
    combinations.Finish();
  }
  const auto order = combinations.TooMany() ? std::nullopt : InOrder(combinations, fields);
  kept.tooMany = !order.has_value();
  Replace(*kept.rows, table, fields, combinations, order.value_or(std::vector<std::int64_t>()));
  kept.current = true;
}

}  // namespace varnlog::dao
