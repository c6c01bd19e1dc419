#include "db/dao/DistinctRows.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

#include "db/dao/DifferentRows.h"
#include "db/dao/JetSql.h"
#include "db/dao/RowCollector.h"
#include "db/dao/Statement.h"
#include "db/dao/ValueDictionary.h"

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
  return "CREATE TABLE " + QuoteIdentifier(table.name) + " (" + columns + ")";
}

/// Whether the values, which are handled as texts, are in the same order as such.
bool HasTextOrder(const FieldDef& field) {
  return field.type != FieldType::kLong && field.type != FieldType::kDouble;
}

bool IsCollated(const FieldDef& field) {
  return field.type == FieldType::kText || field.type == FieldType::kMemo;
}

/// For each row the place of one of its values in the collation's order, NULL first.
std::vector<std::uint32_t> RanksOf(const std::vector<RowTexts>& rows, std::size_t column) {
  ValueDictionary values;
  std::vector<std::uint32_t> codes(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i][column]) codes[i] = values.Intern(*rows[i][column]);
  }
  const std::vector<std::uint32_t> ranks = RankValues(values, true);
  for (std::size_t i = 0; i < rows.size(); ++i) codes[i] = rows[i][column] ? ranks[codes[i]] + 1 : 0;
  return codes;
}

/// The rows' numbers in the order of the fields.
std::vector<std::size_t> InOrder(const std::vector<RowTexts>& rows, const Fields& fields) {
  // Texts are compared through their ranks, everything else by its bytes; that begins with NULL as well.
  std::vector<std::vector<std::uint32_t>> ranks(fields.size());
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (IsCollated(*fields[i])) ranks[i] = RanksOf(rows, i);
  }
  std::vector<std::size_t> order(rows.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    for (std::size_t i = 0; i < ranks.size(); ++i) {
      if (ranks[i].empty() && rows[a][i] != rows[b][i]) return rows[a][i] < rows[b][i];
      if (!ranks[i].empty() && ranks[i][a] != ranks[i][b]) return ranks[i][a] < ranks[i][b];
    }
    return a < b;
  });
  return order;
}

void Insert(Connection& target, const TableSchema& table, const Fields& fields,
            const std::vector<RowTexts>& rows) {
  std::string parameters = "?";
  for (std::size_t i = 1; i < fields.size(); ++i) parameters += ", ?";
  WriteScope scope(target);
  target.Execute("DELETE FROM " + QuoteIdentifier(table.name));
  Statement insert(target, "INSERT INTO " + QuoteIdentifier(table.name) + " VALUES (" + parameters + ")");
  for (const std::size_t number : InOrder(rows, fields)) {
    const RowTexts& row = rows[number];
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const int parameter = static_cast<int>(i) + 1;
      row[i] ? insert.Bind(parameter, *row[i]) : insert.BindNull(parameter);
    }
    insert.Run();
  }
  scope.Commit();
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
  if (!kept->current || kept->stamp != source.CurrentStamp()) Fill(*kept, source, table, defs);
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
  kept->rows = Connection::InMemory(source);
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
    kept.stamp = source.CurrentStamp();
    Statement scan(source, CollectSql(FieldList(fields), from, 1));
    Collect(scan, 1, combinations);
    combinations.Finish();
  }
  kept.tooMany = combinations.TooMany();
  std::vector<RowTexts> rows(kept.tooMany ? 0 : combinations.Count());
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = combinations.At(i);
  Insert(*kept.rows, table, fields, rows);
  kept.current = true;
}

}  // namespace varnlog::dao
