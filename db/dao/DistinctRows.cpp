#include "db/dao/DistinctRows.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "db/dao/JetSql.h"
#include "db/dao/RowKeys.h"
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

bool IsCollated(const FieldDef& field) {
  return field.type == FieldType::kText || field.type == FieldType::kMemo;
}

/// The codes of the combinations in the order of the fields.
std::vector<std::uint32_t> InOrder(const ValueDictionary& combinations, const Fields& fields) {
  std::vector<std::vector<CellView>> rows(combinations.Size());
  for (std::uint32_t code = 0; code < rows.size(); ++code) rows[code] = ReadRowKey(combinations.At(code));
  std::vector<std::uint32_t> order(rows.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const int compared = CompareCells(rows[a][i], rows[b][i], IsCollated(*fields[i]));
      if (compared != 0) return compared < 0;
    }
    return false;
  });
  return order;
}

void BindCell(Statement& statement, int parameter, const CellView& cell) {
  if (cell.kind == CellKind::kText) return statement.Bind(parameter, cell.text);
  if (cell.kind == CellKind::kInteger) return statement.Bind(parameter, cell.integer);
  if (cell.kind == CellKind::kReal) return statement.Bind(parameter, cell.real);
  statement.BindNull(parameter);
}

void Insert(Connection& target, const TableSchema& table, const ValueDictionary& combinations,
            const Fields& fields) {
  std::string parameters = "?";
  for (std::size_t i = 1; i < fields.size(); ++i) parameters += ", ?";
  WriteScope scope(target);
  target.Execute("DELETE FROM " + QuoteIdentifier(table.name));
  Statement insert(target, "INSERT INTO " + QuoteIdentifier(table.name) + " VALUES (" + parameters + ")");
  for (const std::uint32_t code : InOrder(combinations, fields)) {
    int parameter = 0;
    for (const CellView& cell : ReadRowKey(combinations.At(code))) BindCell(insert, ++parameter, cell);
    insert.Run();
  }
  scope.Commit();
}

}  // namespace

Connection* DistinctRows::Find(Connection& source, const TableSchema& table,
                               const std::vector<std::string>& fields) {
  if (fields.empty() || source.InTransaction()) return nullptr;
  Fields defs;
  for (const std::string& field : fields) {
    const auto ordinal = table.FieldAt(field);
    if (!ordinal) return nullptr;
    defs.push_back(&table.fields[*ordinal]);
  }
  Kept* const kept = Entry(source, table, defs);
  if (kept == nullptr) return nullptr;
  if (!kept->current || kept->stamp != source.CurrentStamp()) Fill(*kept, source, table, defs);
  return kept->tooMany ? nullptr : kept->rows.get();
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
  kept.tooMany = false;
  ValueDictionary combinations;
  {
    const ReadScope scope(source);
    Statement scan(source, "SELECT " + FieldList(fields) + " FROM " + QuoteIdentifier(table.name));
    const ResetAtEnd reset(scan);
    bool more = scan.Step();
    // The first step holds off other writers, so this is the stamp of all that follows.
    kept.stamp = source.CurrentStamp();
    std::string key;
    for (; more && !kept.tooMany; more = scan.Step()) {
      key.clear();
      AppendRowKey(scan, static_cast<int>(fields.size()), key);
      combinations.Intern(key);
      kept.tooMany = combinations.Size() > kMostCombinations;
    }
  }
  Insert(*kept.rows, table, kept.tooMany ? ValueDictionary() : combinations, fields);
  kept.current = true;
}

}  // namespace varnlog::dao
