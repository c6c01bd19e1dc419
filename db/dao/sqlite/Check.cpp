#include "db/dao/sqlite/Check.h"

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/IndexCheck.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/TableSalvage.h"

namespace varnlog::dao {

namespace {

using Findings = std::vector<std::string>;

void CheckPages(Connection& connection, const std::string& pragma, Findings& findings) {
  Statement check(connection, pragma);
  while (check.Step())
    if (check.Text(0) != "ok") findings.emplace_back(check.Text(0));
}

// Counts the values of a table that cannot have come from a field of their type.
class ValueCheck {
 public:
  explicit ValueCheck(const TableSchema& table) : table_(table), wrong_(table.fields.size()) {}

  void TakeRow(std::span<const CellView> row) {
    for (std::size_t i = 0; i < wrong_.size(); ++i)
      if (!FitsField(row[i + 1], table_.fields[i])) ++wrong_[i];
  }
  void Report(Findings& findings) const {
    for (std::size_t i = 0; i < wrong_.size(); ++i)
      if (wrong_[i] > 0)
        findings.push_back("table " + table_.name + ", field " + table_.fields[i].name + ": " +
                           std::to_string(wrong_[i]) + " values that the field cannot hold");
  }

 private:
  const TableSchema& table_;
  std::vector<std::int64_t> wrong_;
};

// One reading of the table serves its values and all its indexes.
void CheckTable(Connection& connection, const TableSchema& table, Findings& findings) {
  std::vector<IndexCheck> indexes = IndexChecks(connection, table, findings);
  ValueCheck values(table);
  std::string sql = "SELECT rowid";
  for (const FieldDef& field : table.fields) sql += ", " + QuoteIdentifier(field.name);
  Statement rows(connection, sql + " FROM " + QuoteIdentifier(table.name) + " NOT INDEXED");
  std::vector<CellView> row(table.fields.size() + 1);
  while (rows.Step()) {
    rows.GetValues(row);
    values.TakeRow(row);
    for (IndexCheck& index : indexes) index.TakeRow(row);
  }
  values.Report(findings);
  for (IndexCheck& index : indexes) index.Compare(connection, findings);
}

// A damaged page can end the check itself; what else is wrong cannot be told then.
template <typename Run>
Findings Collect(const Run& run) {
  Findings findings;
  try {
    run(findings);
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
    findings.emplace_back(error.what());
  }
  return findings;
}

}  // namespace

std::vector<std::string> CheckStructure(Connection& connection) {
  return Collect([&](Findings& findings) { CheckPages(connection, "PRAGMA integrity_check", findings); });
}

// The storage's own comparison of indexes and tables seeks every row in every index, which takes several
// times as long as reading both.
std::vector<std::string> CheckFile(Connection& connection) {
  return Collect([&](Findings& findings) {
    ReadScope scope(connection);
    CheckPages(connection, "PRAGMA quick_check", findings);
    for (const std::string& name : ReadTableNames(connection))
      CheckTable(connection, ReadTableSchema(connection, name), findings);
  });
}

}  // namespace varnlog::dao
